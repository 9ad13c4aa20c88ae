#include "check/ModelContent.h"

#include <utility>

namespace Qov::Tools {
namespace {

/// Limits the memory of places, because there can be millions of them with very long names.
constexpr std::size_t kLongestName = 256;

}  // namespace

NodeType StoredNode::GetType() const {
  if (mType.empty()) return NodeType::None;
  if (mType == QovRyx::Group::kType) return NodeType::Group;
  if (mType == QovRyx::Shape::kType) return NodeType::Shape;
  if (mType == QovRyx::Geometry::kType) return NodeType::Geometry;
  if (mType == QovRyx::NodeSets::kType) return NodeType::NodeSets;
  return NodeType::Unknown;
}

std::uint64_t StoredNode::GetLeastLightSize() const {
  switch (GetType()) {
    case NodeType::Group:
      if (!QovRyx::HasPlacement(mVersion)) return 0;
      return QovRyx::kPlacementSize + (QovRyx::HasModelFlag(mVersion) ? 1 : 0);
    case NodeType::Geometry:
      return QovRyx::kNumResultsSize;
    case NodeType::NodeSets:
      return QovRyx::kNodeSetsLightSize;
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
