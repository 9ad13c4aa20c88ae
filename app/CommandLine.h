#pragma once

#include <optional>
#include <string>
#include <vector>

/// What the user asked for: options in any place among the paths, the output last of the paths.
struct CommandLine {
  std::vector<std::string> mOptions;
  std::vector<std::string> mInputs;
  std::string mOutput;

  bool Has(const std::string& option) const;
};

/// Nothing if there are fewer than two inputs and an output. `arguments` are those behind the
/// program's name; what begins with "--" is an option, and one that is not known is no error.
std::optional<CommandLine> ParseCommandLine(const std::vector<std::string>& arguments);

/// Inputs by what they hold, each list in the order of the inputs.
struct InputLists {
  std::vector<std::string> mModels;
  std::vector<std::string> mViewPointFiles;
};

/// View-point files end in ".vpt"; everything else is a model.
InputLists SplitInputs(const std::vector<std::string>& inputs);
