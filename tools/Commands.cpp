#include "Command.h"

namespace Qov::Tools {

std::vector<std::unique_ptr<Command>> MakeCommands() {
  std::vector<std::unique_ptr<Command>> commands;
  commands.push_back(MakeLsCommand());
  commands.push_back(MakeSampleCommand());
  return commands;
}

}  // namespace Qov::Tools
