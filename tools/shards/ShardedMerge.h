#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

#include "Qov/Ryx/Merge.h"
#include "merge/InputOptions.h"
#include "merge/MergeRequestOptions.h"

namespace Qov::Tools {

/// A command line of `ryx merge` that is divided into parts.
class ShardedMerge {
 public:
  /// Parses the arguments after "ryx merge". Raises InvalidMethod for a wrong command line, and the
  /// errors of reading lists.
  explicit ShardedMerge(std::vector<std::string> arguments);
  ShardedMerge(const ShardedMerge&) = delete;
  ShardedMerge& operator=(const ShardedMerge&) = delete;

  /// Returns the request, with the inputs in the order of the merge.
  const QovRyx::MergeRequest& GetRequest() const { return mRequest; }
  bool IsStrict() const { return mStrict; }
  /// Returns the inputs as they were given.
  const std::vector<std::string>& GetGivenInputs() const { return mGivenInputs; }
  /// Returns the models, or the view-point files, in the order of the merge.
  std::vector<std::string> ListInputs(bool viewPointFiles) const;

  /// Returns the given options that decide about the content of the whole merge.
  std::vector<std::string> RepeatContentOptions() const;
  /// Returns the given options that decide about the content of the parts.
  std::vector<std::string> RepeatPartOptions() const;
  /// Returns the given options that decide about the join; all but the mode and the names.
  std::vector<std::string> RepeatJoinOptions() const;

 private:
  void Declare();
  void Parse(std::vector<std::string> arguments);
  /// Returns the given options without those of these names.
  std::vector<std::string> Repeat(const std::vector<const CLI::Option*>& options,
                                  const std::vector<std::string>& without) const;

  CLI::App mApp;
  QovRyx::MergeRequest mRequest;
  InputOptions mInputOptions;
  MergeRequestOptions mContentOptions;
  std::vector<const CLI::Option*> mOutputOptions;
  std::vector<std::string> mGivenInputs;
  bool mStrict = false;
  bool mVerify = false;  ///< Without effect, because the merge is always verified.
};

}  // namespace Qov::Tools
