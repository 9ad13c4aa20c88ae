#include "CommandLine.h"

#include <algorithm>
#include <cstddef>

namespace {

constexpr std::size_t kFewestPaths = 3;

}  // namespace

bool CommandLine::Has(const std::string& option) const {
  return std::find(mOptions.begin(), mOptions.end(), option) != mOptions.end();
}

std::optional<CommandLine> ParseCommandLine(const std::vector<std::string>& arguments) {
  CommandLine commandLine;
  for (const std::string& argument : arguments) {
    (argument.starts_with("--") ? commandLine.mOptions : commandLine.mInputs).push_back(argument);
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
