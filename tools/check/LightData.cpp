#include "check/LightData.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "Plural.h"
#include "check/StreamEnd.h"
#include "model/GeometryVersion.h"
#include "model/StreamNames.h"

namespace Qov::Tools {
namespace {

class LightReader {
 public:
  LightReader(StreamCursor& cursor, Findings& findings) : mCursor(cursor), mFindings(findings) {}

  /// Reads the light data of all nodes in stored order, in one pass, for any order of the offsets.
  void Read(ModelContent& model);

 private:
  bool MoveTo(const StoredNode& node);
  void TakeNode(StoredNode& node);
  void TakeGroup(const StoredNode& node);
  void TakeGeometry(StoredNode& node);
  StoredVariable TakeVariable(const StoredNode& node);
  void TakeExtent(StoredVariable& variable);
  void TakeSets(StoredNode& node);
  Place At(const StoredNode& node, std::uint64_t byte) const {
    return node.At(Place::InStream(mCursor.GetName(), byte));
  }

  StreamCursor& mCursor;
  Findings& mFindings;
};

/// Returns the nodes that have light data, in the order of their offsets.
std::vector<StoredNode*> SortByOffset(ModelContent& model, Findings& findings) {
  std::vector<StoredNode*> nodes;
  bool isAtStart = true;  // Readers move to every offset but 0, even for nodes without light data.
  for (StoredNode& node : model.mNodes) {
    isAtStart = isAtStart && node.mLightOffset == 0;
    node.mHasLightData = node.GetLeastLightSize() == 0;
    if (node.mHasLightData) continue;
    if (node.mLightOffset != 0 || isAtStart) {
      nodes.push_back(&node);
    } else {
      findings.Error("light-offset", node.At(Place::InStream(QovRyx::kRyxTree, node.mPosition)),
                     "The offset of its light data is 0, for which readers do not move.");
    }
    isAtStart = false;
  }
  std::stable_sort(nodes.begin(), nodes.end(), [](const StoredNode* a, const StoredNode* b) {
    return a->mLightOffset < b->mLightOffset;
  });
  return nodes;
}

bool HasUnknownLayout(const StoredNode& node) {
  return node.GetType() == NodeType::Geometry && QovRyx::IsNewerGeometryVersion(node.mVersion);
}

void LightReader::Read(ModelContent& model) {
  for (StoredNode* node : SortByOffset(model, mFindings)) {
    if (!MoveTo(*node) || HasUnknownLayout(*node)) continue;
    try {
      TakeNode(*node);
      node->mHasLightData = true;
    } catch (const StreamCursor::EndReached&) {
      ReportEnd(mCursor, node->At({}), "the light data of the node", mFindings);
    }
  }
  if (model.mIsComplete) ReportRest(mCursor, "data of a node", mFindings);
}

bool LightReader::MoveTo(const StoredNode& node) {
  const std::uint64_t offset = node.mLightOffset;
  const std::uint64_t reached = mCursor.GetPosition();
  if (offset < reached) {
    mFindings.Error("light-offset", At(node, offset),
                    fmt::format("Its light data begin within those of another node, which end at "
                                "byte {}.",
                                reached));
    return false;
  }
  if (offset > mCursor.GetLength()) {
    mFindings.Error("light-offset", At(node, offset),
                    fmt::format("Its light data begin after the end of the stream, which has {}.",
                                Plural(mCursor.GetLength(), "byte")));
    return false;
  }
  try {
    mCursor.MoveTo(offset);
  } catch (const StreamCursor::EndReached&) {
    mFindings.Warning("unchecked", At(node, offset),
                      "The node cannot be checked, because the stream is damaged before it.");
    return false;
  }
  if (offset != reached) {
    mFindings.Warning(
        "light-gap", At(node, reached),
        fmt::format("A gap of {} precedes its light data.", Plural(offset - reached, "byte")));
  }
  return true;
}

void LightReader::TakeNode(StoredNode& node) {
  switch (node.GetType()) {
    case NodeType::Geometry:
      return TakeGeometry(node);
    case NodeType::NodeSets:
      return TakeSets(node);
    default:
      return TakeGroup(node);
  }
}

void LightReader::TakeGroup(const StoredNode& node) { mCursor.PassOver(node.GetLeastLightSize()); }

void LightReader::TakeGeometry(StoredNode& node) {
  const std::uint64_t start = mCursor.GetPosition();
  const auto count = mCursor.Take<std::int32_t>();
  if (count < 0) {
    mFindings.Error("variable-count", At(node, start),
                    fmt::format("The number of its results is {}.", count));
    return;
  }
  const std::uint64_t most = mCursor.GetRemaining() / QovRyx::kLeastDescriptorSize;
  node.mVariables.reserve(std::min(static_cast<std::uint64_t>(count), most));
  for (std::int32_t i = 0; i < count; ++i) node.mVariables.push_back(TakeVariable(node));
}

StoredVariable LightReader::TakeVariable(const StoredNode& node) {
  StoredVariable variable;
  variable.mName = mCursor.TakeText(mFindings, node.At({}));
  variable.mKindWord = mCursor.Take<std::uint32_t>();
  const GeometryLayout layout = node.GetLayout();
  const bool isLinked = layout != GeometryLayout::Older && mCursor.Take<std::uint8_t>() != 0;
  if (isLinked) {
    QovRyx::ResultPlace place;
    place.mNode = mCursor.Take<std::uint32_t>();
    place.mPosition = mCursor.Take<std::uint32_t>();
    variable.mLink = QovRyx::ResultLink(place);
  } else {
    TakeExtent(variable);
    if (layout != GeometryLayout::Older) mCursor.PassOver(QovRyx::kCarriedFieldsSize);
    if (layout == GeometryLayout::WideOffsets) variable.mOffset = mCursor.Take<std::uint64_t>();
    if (layout == GeometryLayout::NarrowOffsets || layout == GeometryLayout::InlineValues) {
      variable.mOffset = mCursor.Take<std::uint32_t>();
    }
  }
  mCursor.PassOver(1);  // the flag that all variables have
  return variable;
}

void LightReader::TakeExtent(StoredVariable& variable) {
  variable.mSize = mCursor.Take<std::uint32_t>();
  variable.mWidth = mCursor.Take<std::uint8_t>();
}

void LightReader::TakeSets(StoredNode& node) {
  const std::uint64_t start = mCursor.GetPosition();
  const auto size = mCursor.Take<std::uint32_t>();
  node.mNumSets = mCursor.Take<std::uint32_t>();
  node.mSetsOffset = mCursor.Take<std::uint64_t>();
  node.mNumSetValues = mCursor.Take<std::uint32_t>();
  if (size == QovRyx::kNodeSetsFieldsSize) return;
  mFindings.Warning("set-size", At(node, start),
                    fmt::format("The size in its light data should be {}; it is {}.",
                                QovRyx::kNodeSetsFieldsSize, size));
}

}  // namespace

void ReadLightData(Container& container, ModelContent& model, Findings& findings) {
  StreamCursor cursor = container.OpenStream(QovRyx::kLightData);
  LightReader(cursor, findings).Read(model);
}

}  // namespace Qov::Tools
