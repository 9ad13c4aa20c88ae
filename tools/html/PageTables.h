#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "Json.h"
#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// Returns the groups, shapes and geometries above and including those of `parts`, parents before
/// children. The value of `parts` is the member "part" of a geometry.
Json MakeNodes(const QovRyx::Tree& tree, const std::unordered_map<std::uint32_t, Json>& parts);

/// Returns the attributes of groups and results, the history and the statistics of results as
/// tables. The patterns choose results (MatchesResult); without any, all results are taken. Reads
/// the arrays once. Notes rows that are left out, and arrays that cannot be read.
Json MakeTables(const QovRyx::Tree& tree, const std::vector<std::string>& patterns,
                std::vector<std::string>& notes);

}  // namespace Qov::Tools
