#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "Qov/Ryx/ResultLink.h"
#include "check/Finding.h"
#include "model/ModelFormat.h"

/// A model as stored in its streams, with its errors. The checks of a file share it.
namespace Qov::Tools {

enum class NodeType { None, Group, Shape, Geometry, NodeSets, Unknown };

/// The descriptor of a result.
struct StoredVariable {
  std::string mName;
  std::uint32_t mKindWord = 0;
  QovRyx::ResultLink mLink;
  std::uint32_t mSize = 0;  ///< Bytes.
  std::uint8_t mWidth = 0;
  std::uint64_t mOffset = 0;  ///< In the heavy stream.
  bool mIsPlaced = false;     ///< True if mOffset is known.

  std::uint64_t GetNumElements() const { return mSize / QovRyx::kElementSize; }
};

using QovRyx::GeometryLayout;

/// A tree record and the light data of its node.
struct StoredNode {
  std::uint64_t mPosition = 0;  ///< Position of the record in its stream.
  std::uint32_t mId = 0;
  std::uint32_t mParent = 0;
  std::uint32_t mPreviousSibling = 0;
  std::uint32_t mNextSibling = 0;
  std::uint32_t mFirstChild = 0;
  std::uint32_t mLastChild = 0;
  std::string mName;
  std::string mType;
  std::string mVersion;
  std::uint64_t mLightOffset = 0;

  bool mHasLightData = false;  ///< True if all of them were read.
  std::vector<StoredVariable> mVariables;
  std::uint32_t mNumSets = 0;
  std::uint64_t mSetsOffset = 0;
  std::uint32_t mNumSetValues = 0;

  NodeType GetType() const;
  GeometryLayout GetLayout() const { return QovRyx::GetGeometryLayout(mVersion); }
  bool HasInlineValues() const { return QovRyx::HasInlineValues(GetLayout()); }
  /// Returns the least size in bytes of the light data of its type and version, or 0 for none.
  std::uint64_t GetLeastLightSize() const;

  /// Returns the place with this node, and with a result.
  Place At(Place place) const;
  Place At(Place place, std::size_t variable) const;
};

struct ModelContent {
  std::vector<StoredNode> mNodes;  ///< In stored order.
  /// True if all records were read. Only then streams in the order of the nodes can be checked
  /// completely.
  bool mIsComplete = false;
  /// Positions by id; the first one for an id that occurs twice.
  std::unordered_map<std::uint32_t, std::size_t> mPositions;

  const StoredNode* Find(std::uint32_t id) const;
  StoredNode* Find(std::uint32_t id);
};

}  // namespace Qov::Tools
