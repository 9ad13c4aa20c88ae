#include "check/ModelContent.h"

#include <utility>

namespace Qov::Tools {
namespace {

/// Places are made by the million, and a name could be as long as a file.
constexpr std::size_t kLongestName = 256;

}  // namespace

NodeType StoredNode::GetType() const {
  if (mType.empty()) return NodeType::None;
  if (mType == "Group") return NodeType::Group;
  if (mType == "Shape") return NodeType::Shape;
  if (mType == "Geometry") return NodeType::Geometry;
  if (mType == "NodeSets") return NodeType::NodeSets;
  return NodeType::Unknown;
}

GeometryLayout StoredNode::GetLayout() const {
  if (mVersion == "0.7") return GeometryLayout::WideOffsets;
  if (mVersion == "0.6") return GeometryLayout::NarrowOffsets;
  if (mVersion == "0.5") return GeometryLayout::InlineValues;
  return GeometryLayout::Older;
}

std::uint64_t StoredNode::GetLeastLightSize() const {
  constexpr std::uint64_t kPlacements = 40;
  switch (GetType()) {
    case NodeType::Group:
      if (IsOldest()) return 0;
      return mVersion == "0.2" || mVersion == "0.3" ? kPlacements : kPlacements + 1;
    case NodeType::Geometry:
      return 4;
    case NodeType::NodeSets:
      return 20;
    default:
      return 0;
  }
}

Place StoredNode::At(Place place) const {
  place.mNode = Place::Named{mId, mName.substr(0, kLongestName)};
  return place;
}

Place StoredNode::At(Place place, std::size_t variable) const {
  place = At(std::move(place));
  place.mResult = Place::Named{static_cast<std::uint32_t>(variable),
                               mVariables[variable].mName.substr(0, kLongestName)};
  return place;
}

const StoredNode* ModelContent::Find(std::uint32_t id) const {
  const auto found = mPositions.find(id);
  return found == mPositions.end() ? nullptr : &mNodes[found->second];
}

StoredNode* ModelContent::Find(std::uint32_t id) {
  return const_cast<StoredNode*>(std::as_const(*this).Find(id));
}

}  // namespace Qov::Tools
