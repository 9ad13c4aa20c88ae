#pragma once

#include <string>
#include <vector>

#include "ExpectedModel.h"
#include "Json.h"
#include "Output.h"

namespace Qov::Tools {

/// An effect of a merge that its user may not expect, although the merge can be done.
struct Warning {
  std::string mCode;    ///< Stable; docs/json/plan.md lists them.
  std::string mPath;    ///< The file that it concerns; may be empty. Not escaped.
  std::string mText;    ///< Not escaped.
  std::string mRemedy;  ///< The action that the user can take.
};

/// Finds an output that exists already.
std::vector<Warning> FindOutputWarnings(const MergeRequest& request);

/// Finds inputs that are given twice, and options without effect.
std::vector<Warning> FindRequestWarnings(const MergeOptions& options, const MergeRequest& request);

/// Finds data that the merge leaves out, and inputs that do not fit together. All inputs must be
/// readable; `ledger` is that of `model`.
std::vector<Warning> FindContentWarnings(const std::vector<InputFile>& inputs,
                                         const ExpectedModel& model, const Ledger& ledger);

/// Returns true if a warning is about data in an input that the merge cannot carry.
bool TellsOfLoss(const std::vector<Warning>& warnings);

/// Prints the warnings, each with its remedy, in colour where the output has colours.
void PrintWarnings(const std::vector<Warning>& warnings, Output& output);

/// Returns the warnings as JSON (docs/json/plan.md).
Json WarningsJson(const std::vector<Warning>& warnings);

}  // namespace Qov::Tools
