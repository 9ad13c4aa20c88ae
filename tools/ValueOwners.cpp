#include "ValueOwners.h"

namespace Qov::Tools {

using QovRyx::Geometry;

bool HoldsIntegers(const Geometry::VarStruct& variable) {
  constexpr std::uint32_t kUnsignedResult = 5;
  return variable.IsIntegerKind() || variable.mKindHighByte == kUnsignedResult;
}

ValueOwners::ValueOwners(const QovRyx::NodeTree& nodes) {
  QovRyx::ForEachGeometry(nodes, [this](std::uint32_t, const Geometry& geometry) {
    for (const Geometry::VarStruct& variable : geometry.GetVariables()) {
      const QovRyx::DataLoader* loader = variable.mValues.GetLoader().get();
      if (!variable.mLinked && loader != nullptr) mOwners.emplace(loader, &variable);
    }
  });
}

bool ValueOwners::HoldIntegers(const Geometry::VarStruct& variable) const {
  if (!variable.mLinked) return HoldsIntegers(variable);
  const auto owner = mOwners.find(variable.mValues.GetLoader().get());
  return HoldsIntegers(owner == mOwners.end() ? variable : *owner->second);
}

}  // namespace Qov::Tools
