#pragma once

#include <string>
#include <vector>

#include "ExpectedModel.h"

/// Recognizes outputs that were merged in another way than the one they are compared with. Reads
/// almost no values of results.
namespace Qov::Tools {

/// Returns true if an output has the nodes and results of a merge, and as many history entries.
/// Compares no values.
bool FitsMerge(const MergeRequest& request, const std::vector<InputFile>& inputs,
               const QovRyx::Tree& output);

/// Returns how an output was merged if its nodes and results are not those of the requested merge:
/// with other options, in another order, or without some of the inputs. Returns an empty text if
/// they are, or if no merge fits. Leaves `inputs` as they are.
std::string RecognizeOtherMerge(const MergeRequest& request, std::vector<InputFile>& inputs,
                                const QovRyx::Tree& output);

/// Names the inputs whose results are in a compared output, all with other values, so that they
/// were probably not the inputs of the merge. Returns an empty text if there are none. `model` is
/// marked by VerifyOutput.
std::string RecognizeOtherInputs(const ExpectedModel& model, const std::vector<InputFile>& inputs);

}  // namespace Qov::Tools
