#include "mesh/MeshArrays.h"

#include <algorithm>

namespace QovMesh {

bool ShareValues(const QovRyx::Geometry::VarStruct* a, const QovRyx::Geometry::VarStruct* b) {
  if (a == nullptr || b == nullptr || a == b) return a == b;
  const auto& loader = a->mValues.GetLoader();
  return loader != nullptr && loader == b->mValues.GetLoader();
}

MeshArrays::MeshArrays(const QovRyx::Geometry& geometry) {
  for (const auto& variable : geometry.GetVariables()) {
    const QovRyx::ArrayName name = QovRyx::SplitName(variable.mName);
    if (QovRyx::IsMeshBase(name.mBase)) mArrays.try_emplace(name, &variable);
  }
}

const QovRyx::Geometry::VarStruct* MeshArrays::Find(std::string_view base,
                                                    std::string_view instance) const {
  auto found = mArrays.find({base, instance});
  if (found == mArrays.end()) found = mArrays.find({base, {}});
  return found == mArrays.end() ? nullptr : found->second;
}

bool MeshArrays::HasOwnMesh(std::string_view instance, std::string_view other) const {
  return std::any_of(kExportedArrays.begin(), kExportedArrays.end(), [&](std::string_view base) {
    const auto own = mArrays.find({base, instance});
    return own != mArrays.end() && !ShareValues(own->second, Find(base, other));
  });
}

MeshCounts MeshArrays::Count(std::string_view instance) const {
  const auto* points = Find(QovRyx::kCoordinates, instance);
  const auto* lengths = Find(QovRyx::kPolylength, instance);
  const bool hasCells = lengths != nullptr && Find(QovRyx::kConnectivity, instance) != nullptr;
  return {points == nullptr ? 0 : CountItems(points->mValues),
          hasCells ? lengths->mValues.GetNumElements() : 0};
}

std::uint64_t CountItems(const QovRyx::NumericArray& values) {
  return values.GetNumElements() / std::max<std::uint64_t>(values.GetWidth(), 1);
}

}  // namespace QovMesh
