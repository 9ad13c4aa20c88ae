#pragma once

#include <cstdint>

#include "Qov/Ryx/Tree.h"
#include "Qov/Util/Assert.h"

namespace QovRyx {

/// Calls `visit(id, geometry)` for every entry whose type string is that of a geometry, in
/// ascending order of ids. Any other node with this type string is an error in the program.
template <class Visitor>
void ForEachGeometryEntry(Tree& tree, Visitor visit) {
  for (auto& [id, entry] : tree.GetNodes()) {
    if (!entry.mData || entry.mData->GetType() != Geometry::kType) continue;
    Geometry* pRyxGeometry = AsGeometry(entry);
    QOV_ASSERT(0 != pRyxGeometry);  // NOLINT(modernize-use-nullptr): this text is shown
    visit(id, *pRyxGeometry);
  }
}

}  // namespace QovRyx
