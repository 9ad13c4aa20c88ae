#include "ItemNames.h"

#include <fmt/format.h>

#include <array>
#include <exception>

#include "ErrorText.h"
#include "VerifiedValues.h"
#include "mesh/MeshArrays.h"

namespace Qov::Tools {

const char* NameOf(ItemName::Kind kind) {
  static constexpr std::array kNames = {"node", "element", "point", "cell", "item"};
  return kNames[static_cast<std::size_t>(kind)];
}

std::string ItemText(const ItemName& name) {
  return fmt::format("{} {}", NameOf(name.mKind), name.mNumber);
}

ItemName ItemNames::Find(const QovRyx::Geometry& geometry,
                         const QovRyx::Geometry::VarStruct& result, std::uint64_t position) {
  using Kind = ItemName::Kind;
  const std::string_view instance = QovRyx::SplitName(result.mName).mInstance;
  const QovMesh::MeshArrays arrays(geometry);
  const QovMesh::Placement placement =
      mPlacements.Decide(result, arrays.Count(instance)).mPlacement;
  if (placement == QovMesh::Placement::Field) return {Kind::Item, position};
  const bool isPoint = placement == QovMesh::Placement::Point;
  const auto* variable = arrays.Find(isPoint ? QovRyx::kNodeIds : QovRyx::kElementIds, instance);
  if (variable != nullptr) {
    const auto& ids = Load(variable->mValues, isPoint ? mNodeIds : mElementIds);
    if (position < ids.size()) return {isPoint ? Kind::Node : Kind::Element, ids[position]};
  }
  return {isPoint ? Kind::Point : Kind::Cell, position};
}

const std::vector<std::uint32_t>& ItemNames::Load(const QovRyx::NumericArray& array, Ids& ids) {
  if (array.GetLoader() && ids.mpLoader == array.GetLoader().get()) return ids.mValues;
  ids.mpLoader = array.GetLoader().get();
  try {
    ReadVerifiedValues(array, ids.mValues);
  } catch (const std::exception& error) {
    ids.mValues.clear();
    if (mTrouble.empty()) mTrouble = "ids cannot be read: " + ErrorText(error);
  }
  return ids.mValues;
}

}  // namespace Qov::Tools
