#include "check/TreeRecords.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

#include "Plural.h"
#include "check/StreamEnd.h"
#include "model/GeometryVersion.h"
#include "model/StreamNames.h"

namespace Qov::Tools {
namespace {

template <class Versions>
bool IsOneOf(const std::string& version, const Versions& known) {
  return std::find(known.begin(), known.end(), version) != known.end();
}

bool IsKnownVersion(const StoredNode& node) {
  switch (node.GetType()) {
    case NodeType::Group:
      return IsOneOf(node.mVersion, QovRyx::kGroupVersions);
    case NodeType::Shape:
      return IsOneOf(node.mVersion, QovRyx::kShapeVersions);
    case NodeType::Geometry:
      return IsOneOf(node.mVersion, QovRyx::kGeometryVersions);
    case NodeType::NodeSets:
      return IsOneOf(node.mVersion, QovRyx::kNodeSetsVersions);
    default:
      return true;
  }
}

StoredNode TakeRecord(StreamCursor& cursor, bool wideOffsets, Findings& findings) {
  StoredNode node;
  node.mPosition = cursor.GetPosition();
  for (std::uint32_t* link : {&node.mId, &node.mParent, &node.mPreviousSibling, &node.mNextSibling,
                              &node.mFirstChild, &node.mLastChild}) {
    *link = cursor.Take<std::uint32_t>();
  }
  for (std::string* text : {&node.mName, &node.mType, &node.mVersion}) {
    *text = cursor.TakeText(findings);
  }
  node.mLightOffset = wideOffsets ? cursor.Take<std::uint64_t>() : cursor.Take<std::uint32_t>();
  return node;
}

class RecordReader {
 public:
  RecordReader(StreamCursor& cursor, ModelContent& model, Findings& findings)
      : mCursor(cursor), mModel(model), mFindings(findings) {}

  void Read(bool wideOffsets);

 private:
  void Enter(StoredNode node);
  void CheckId(const StoredNode& node);
  void CheckKind(const StoredNode& node);
  Place At(const StoredNode& node) const {
    return node.At(Place::InStream(QovRyx::kRyxTree, node.mPosition));
  }

  StreamCursor& mCursor;
  ModelContent& mModel;
  Findings& mFindings;
};

void RecordReader::Read(bool wideOffsets) {
  const auto count = mCursor.Take<std::int32_t>();
  if (count < 1) {
    mFindings.Error("tree-count", Place::InStream(QovRyx::kRyxTree, 0), "The tree has no root.");
    return;
  }
  const auto most = mCursor.GetRemaining() / QovRyx::kLeastTreeRecordSize;
  mModel.mNodes.reserve(std::min(static_cast<std::uint64_t>(count), most));
  for (std::int32_t i = 0; i < count; ++i) Enter(TakeRecord(mCursor, wideOffsets, mFindings));
  mModel.mIsComplete = true;
  if (mCursor.IsAtEnd()) return;
  const std::uint64_t rest = mCursor.GetLength() - mCursor.GetPosition();
  mFindings.Warning("stream-rest", Place::InStream(QovRyx::kRyxTree, mCursor.GetPosition()),
                    Plural(rest, "byte", "follow") + " the last record.");
}

void RecordReader::Enter(StoredNode node) {
  CheckId(node);
  CheckKind(node);
  mModel.mPositions.emplace(node.mId, mModel.mNodes.size());
  mModel.mNodes.push_back(std::move(node));
}

void RecordReader::CheckId(const StoredNode& node) {
  const bool isFirst = mModel.mNodes.empty();
  if (isFirst && node.mId != 1) {
    mFindings.Error("node-id", At(node), "The first record should be the root, with id 1.");
  } else if (node.mId == 0 || node.mId == std::numeric_limits<std::uint32_t>::max()) {
    mFindings.Error("node-id", At(node), fmt::format("{} is not a valid node id.", node.mId));
  } else if (mModel.mPositions.contains(node.mId)) {
    mFindings.Error("node-id", At(node), "An earlier node has the same id.");
  } else if (!isFirst && node.mId < mModel.mNodes.back().mId) {
    mFindings.Warning(
        "node-order", At(node),
        fmt::format("It follows node {}, out of the order of the ids.", mModel.mNodes.back().mId));
  }
}

void RecordReader::CheckKind(const StoredNode& node) {
  if (node.GetType() == NodeType::Unknown && node.mType != QovRyx::FutureNode::kType) {
    mFindings.Warning("node-type", At(node),
                      fmt::format("The type {} is unknown; only the name of the node is kept.",
                                  Quoted(node.mType)));
  }
  if (IsKnownVersion(node)) return;
  if (node.GetType() == NodeType::Geometry && QovRyx::IsNewerGeometryVersion(node.mVersion)) {
    mFindings.Error(
        "node-version", At(node),
        fmt::format("Version {} of a Geometry is newer than the newest known one, \"{}\": "
                    "the model cannot be read.",
                    Quoted(node.mVersion), QovRyx::kNewestGeometryVersion));
    return;
  }
  mFindings.Warning("node-version", At(node),
                    fmt::format("Version {} of a {} is unknown; readers guess its layout.",
                                Quoted(node.mVersion), node.mType));
}

}  // namespace

void ReadTreeRecords(Container& container, ModelContent& model, Findings& findings) {
  StreamCursor cursor = container.OpenStream(QovRyx::kRyxTree);
  try {
    RecordReader(cursor, model, findings).Read(container.HasWideOffsets());
  } catch (const StreamCursor::EndReached&) {
    ReportEnd(cursor, {}, "the tree", findings);
  }
}

}  // namespace Qov::Tools
