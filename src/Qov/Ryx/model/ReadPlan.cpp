#include "ReadPlan.h"

namespace QovRyx {

void AddPart(const NumericArray& array, QovJbf::ReadAhead::Parts& parts) {
  const auto& loader = array.GetLoader();
  if (!loader || loader->GetCount() == 0) return;
  parts.push_back({&loader->GetReader(), loader->GetOffset(), loader->GetCount() * kElementSize});
}

QovJbf::ReadAhead::Parts PlanReads(const NodeTree& nodes) {
  QovJbf::ReadAhead::Parts parts;
  for (const bool integerKinds : {true, false}) {
    ForEachGeometry(nodes, [&](std::uint32_t, const Geometry& geometry) {
      for (const Geometry::VarStruct& variable : geometry.GetVariables()) {
        if (variable.mLink.IsLinked() || variable.IsIntegerKind() != integerKinds) continue;
        AddPart(variable.mValues, parts);
      }
    });
  }
  return parts;
}

}  // namespace QovRyx
