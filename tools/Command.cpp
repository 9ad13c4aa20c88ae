#include "Command.h"

namespace Qov::Tools {

std::vector<std::unique_ptr<Command>> MakeCommands() {
  std::vector<std::unique_ptr<Command>> commands;
  commands.push_back(MakeInfoCommand());
  commands.push_back(MakeLsCommand());
  commands.push_back(MakeStatsCommand());
  commands.push_back(MakeCheckCommand());
  commands.push_back(MakeDiffCommand());
  commands.push_back(MakeDumpCommand());
  commands.push_back(MakeExportCommand());
  commands.push_back(MakePictureCommand());
  commands.push_back(MakeHtmlCommand());
  commands.push_back(MakeExtractCommand());
  commands.push_back(MakeMergeCommand());
  commands.push_back(MakePlanCommand());
  commands.push_back(MakeVerifyCommand());
  commands.push_back(MakeSampleCommand());
  return commands;
}

}  // namespace Qov::Tools
