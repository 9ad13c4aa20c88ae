#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "export/ExportContent.h"

namespace Qov::Tools {

/// The results of one model that are subtracted from those of another.
struct PageDiff {
  std::string mNameA;
  std::string mNameB;
  /// From a result of A to that of B.
  std::unordered_map<const ExportResult*, const ExportResult*> mPairs;
};

/// Finds the counterparts of the results of A: in the part of the same name and groups, with the
/// same name, step, placement and number of components. Removes other results from `a`. Notes them,
/// and parts whose meshes differ; then mIsComplete is false. The meshes are the same if their cells
/// are equal; other coordinates are noted.
///
/// Raises MismatchError if no result is left, and the errors of reading.
void PairResults(ExportContent& a, const ExportContent& b, const QovMesh::KindChoices& kinds,
                 PageDiff& diff);

}  // namespace Qov::Tools
