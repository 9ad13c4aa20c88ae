#pragma once

#include <string>
#include <vector>

#include "ExpectedModel.h"
#include "Json.h"
#include "Output.h"

namespace Qov::Tools {

/// Something about a merge that can be done, but that its user may not expect.
struct Warning {
  std::string mCode;    ///< Stable; docs/json/plan.md lists them.
  std::string mPath;    ///< The file that it is about; empty if it is about none. Not escaped.
  std::string mText;    ///< Not escaped.
  std::string mRemedy;  ///< What to do about it.
};

/// Finds an output that exists already.
std::vector<Warning> FindOutputWarnings(const MergeRequest& request);

/// Finds inputs that are given twice, and options without effect.
std::vector<Warning> FindRequestWarnings(const MergeOptions& options, const MergeRequest& request);

/// Finds what the merge leaves out, and what does not fit together. The inputs could be read, and
/// `ledger` is that of `model`.
std::vector<Warning> FindContentWarnings(const std::vector<InputFile>& inputs,
                                         const ExpectedModel& model, const Ledger& ledger);

/// Returns true if a warning tells of something in an input that the merge cannot carry.
bool TellsOfLoss(const std::vector<Warning>& warnings);

/// Prints the warnings, each with its remedy, in colour where the output has colours.
void PrintWarnings(const std::vector<Warning>& warnings, Output& output);

/// The same for a document (docs/json/plan.md).
Json WarningsJson(const std::vector<Warning>& warnings);

}  // namespace Qov::Tools
