#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace Qov::Tools {

/// The inputs of a merge: arguments, and lists of paths (--from, -0).
class InputOptions {
 public:
  /// Declares the options and the arguments, which are stored in `inputs`. It must exist as long as
  /// the parser.
  void Declare(CLI::App& app, std::vector<std::string>& inputs, const char* help);
  /// Appends the paths of the lists to the inputs. Raises ZeroLength if there are no inputs then,
  /// and the errors of ReadInputList.
  void ReadLists();
  char GetSeparator() const { return mIsZeroSeparated ? '\0' : '\n'; }

 private:
  std::vector<std::string>* mpInputs = nullptr;
  std::vector<std::string> mLists;
  bool mIsZeroSeparated = false;
};

}  // namespace Qov::Tools
