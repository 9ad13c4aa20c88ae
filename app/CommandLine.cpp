#include "CommandLine.h"

#include <cstddef>

namespace {

constexpr std::size_t kFewestPaths = 3;

void SetOption(Qov::MergeOptions& options, const std::string& name) {
  for (const Qov::MergeOption& option : Qov::kMergeOptions) {
    if (option.mName == name) options.*option.mpFlag = true;
  }
}

}  // namespace

std::optional<CommandLine> ParseCommandLine(const std::vector<std::string>& arguments) {
  CommandLine commandLine;
  for (const std::string& argument : arguments) {
    if (argument.starts_with("--")) {
      SetOption(commandLine.mOptions, argument);
    } else {
      commandLine.mInputs.push_back(argument);
    }
  }
  if (commandLine.mInputs.size() < kFewestPaths) return std::nullopt;
  commandLine.mOutput = commandLine.mInputs.back();
  commandLine.mInputs.pop_back();
  return commandLine;
}

InputLists SplitInputs(const std::vector<std::string>& inputs) {
  InputLists lists;
  for (const std::string& input : inputs) {
    (input.ends_with(".vpt") ? lists.mViewPointFiles : lists.mModels).push_back(input);
  }
  return lists;
}
