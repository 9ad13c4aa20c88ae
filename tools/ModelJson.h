#pragma once

#include "Json.h"
#include "ModelStatistics.h"
#include "NodeFilter.h"
#include "Qov/Ryx/Tree.h"

/// Parts of a model as parts of a document (docs/json.md).
namespace Qov::Tools {

/// Returns an array of all entries, parents before children. Sets `complete` to false if a part
/// could not be read. Leaves the results out if `statistics` is null.
Json NodesJson(const QovRyx::Tree& tree, const NodeFilter& filter,
               const ModelStatistics* statistics, bool& complete);
/// Returns types and values by name.
Json AttributesJson(const QovUtil::Attributes& attributes);
/// Returns the names of the views and the size of the sequencer; null if there are none.
Json ViewsJson(const QovRyx::Tree& tree);
/// Returns the programs that wrote the file, oldest first.
Json HistoryJson(const QovRyx::Tree& tree);

}  // namespace Qov::Tools
