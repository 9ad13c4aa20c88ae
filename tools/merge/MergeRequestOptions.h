#pragma once

#include <string>
#include <vector>

#include "Qov/Ryx/Merge.h"
#include "app/MergeOptions.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace Qov::Tools {

/// The options of `ryx merge` that decide about the content of the output. `ryx plan` and
/// `ryx verify` take them, too.
class MergeRequestOptions {
 public:
  /// Declares the options. They are stored in `request`, which must exist as long as the parser.
  void Declare(CLI::App& app, QovRyx::MergeRequest& request);

  /// Returns the options, in the order in which they are declared.
  const std::vector<const CLI::Option*>& GetOptions() const { return mOptions; }

  /// Returns the name of the first option that is given, or an empty text.
  std::string FindGiven() const;

  /// Raises InvalidMethod if options of RyxMerge are given, too.
  void RefuseTogetherWith(const MergeOptions& options) const;

  /// Puts the inputs of the request into the order that the options choose.
  void ArrangeInputs(QovRyx::MergeRequest& request) const;

 private:
  std::vector<const CLI::Option*> mOptions;
  bool mNaturalOrder = false;
};

}  // namespace Qov::Tools
