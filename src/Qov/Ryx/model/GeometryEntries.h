#pragma once

#include <cstdint>

#include "Qov/Ryx/Tree.h"
#include "Qov/Util/Assert.h"

namespace QovRyx {

/// Calls `visit(id, geometry)` for every entry that says it is a geometry, in ascending id order.
/// One that only says so is a mistake of the program.
template <class Visitor>
void ForEachGeometryEntry(Tree& tree, Visitor visit) {
  for (auto& [id, entry] : tree.GetNodes()) {
    if (!entry.mData || entry.mData->GetType() != "Geometry") continue;
    Geometry* pRyxGeometry = AsGeometry(entry);
    QOV_ASSERT(0 != pRyxGeometry);  // NOLINT(modernize-use-nullptr): this text is shown
    visit(id, *pRyxGeometry);
  }
}

}  // namespace QovRyx
