#pragma once

#include <string>
#include <vector>

#include "ExpectedModel.h"

namespace Qov::Tools {

/// An effect of a merge that the user may not expect. The merge can be done nevertheless.
struct Warning {
  std::string mCode;    ///< Stable; docs/json/plan.md lists them.
  std::string mPath;    ///< The file that it concerns, or empty. Not escaped.
  std::string mText;    ///< Not escaped.
  std::string mRemedy;  ///< The action that the user can take.
};

/// Returns a warning if the output exists.
std::vector<Warning> FindOutputWarnings(const MergeRequest& request);

/// Finds inputs that are given twice, and options without effect.
std::vector<Warning> FindRequestWarnings(const MergeOptions& options, const MergeRequest& request);

/// Finds data that the merge leaves out, and inputs that do not fit together. All inputs must be
/// readable; `ledger` is that of `model`.
std::vector<Warning> FindContentWarnings(const std::vector<InputFile>& inputs,
                                         const ExpectedModel& model, const Ledger& ledger);

}  // namespace Qov::Tools
