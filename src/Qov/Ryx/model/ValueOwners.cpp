#include "Qov/Ryx/ValueOwners.h"

namespace QovRyx {

ValueOwners::ValueOwners(const NodeTree& nodes) {
  ForEachGeometry(nodes, [this](std::uint32_t, const Geometry& geometry) {
    for (const Geometry::VarStruct& variable : geometry.GetVariables()) {
      const DataLoader* loader = variable.mValues.GetLoader().get();
      if (!variable.mLink.IsLinked() && loader != nullptr) mOwners.emplace(loader, &variable);
    }
  });
}

bool ValueOwners::HoldUnsigned(const Geometry::VarStruct& variable) const {
  const auto owner =
      variable.mLink.IsLinked() ? mOwners.find(variable.mValues.GetLoader().get()) : mOwners.end();
  return (owner == mOwners.end() ? variable : *owner->second).HoldsUnsigned();
}

}  // namespace QovRyx
