#pragma once

#include <cstddef>
#include <string>

#include "Qov/Ryx/Merge.h"
#include "Qov/Ryx/Tree.h"

/// Merges in parts: MergeRequest::mPartOf makes a part, MergeRequest::mJoinParts puts parts
/// together. A part ends with a history entry that says so.
namespace QovRyx {

/// Raises MiscellaneousError if the members of a request for a part or for joining parts contradict
/// each other, or if the number of stems is not that of the models.
void CheckPartRequest(const MergeRequest& request, std::size_t numModels);

/// Returns the comment of the history entry that the merge adds.
std::string HistoryCommentOf(const MergeRequest& request);

/// Raises FormatNotSupported unless the model is a part.
void CheckIsPart(const Tree& tree);

/// Removes all results and leaves the nodes.
void RemoveAllResults(NodeTree& nodes);

}  // namespace QovRyx
