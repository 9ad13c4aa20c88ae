#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/MergeOptions.h"

/// The parts of a command line.
struct CommandLine {
  Qov::MergeOptions mOptions;
  std::vector<std::string> mInputs;
  std::string mOutput;
};

/// Returns nothing if there are fewer than two inputs and an output. `arguments` are the arguments
/// after the name of the program. Each argument that begins with "--" is an option; unknown options
/// are ignored. The last other argument is the output.
std::optional<CommandLine> ParseCommandLine(const std::vector<std::string>& arguments);

/// The inputs of each kind, in the order of the command line.
struct InputLists {
  std::vector<std::string> mModels;
  std::vector<std::string> mViewPointFiles;
};

/// Separates the view-point files, whose names end in ".vpt", from the models.
InputLists SplitInputs(const std::vector<std::string>& inputs);
