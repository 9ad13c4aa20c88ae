#pragma once

#include "Json.h"
#include "ModelStatistics.h"
#include "NodeFilter.h"
#include "Qov/Ryx/Tree.h"

/// The parts of a model as parts of a document (docs/json.md).
namespace Qov::Tools {

/// An array of all entries, parents before children. Sets `complete` to false if something
/// could not be read. Without `statistics` the results are left out.
Json NodesJson(const QovRyx::Tree& tree, const NodeFilter& filter,
               const ModelStatistics* statistics, bool& complete);
/// By name: type and value.
Json AttributesJson(const QovUtil::Attributes& attributes);
/// The names of the views and the size of the sequencer; null if the model has none.
Json ViewsJson(const QovRyx::Tree& tree);
/// The programs that wrote the file, oldest first.
Json HistoryJson(const QovRyx::Tree& tree);

}  // namespace Qov::Tools
