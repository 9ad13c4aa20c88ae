#include "TreeReader.h"

#include <limits>
#include <utility>

#include "AttributesIo.h"
#include "GeometryVersion.h"
#include "ModelFormat.h"
#include "Qov/Util/Raise.h"
#include "Remaining.h"
#include "StreamNames.h"
#include "diagnostics/Printable.h"

// A tree stream: i32 count, then for each entry in ascending id order
//   id, parent, previous sibling, next sibling, first child, last child: u32 each
//   name, type, version: string each; all empty for an entry without a node
//   offset in the light stream: u64, or u32 in files before container version 0.7

namespace QovRyx {
namespace {

constexpr const char* kSource = "include/Qov/Ryx/Tree";
using Qov::Util::Raise;
using ErrorType = Qov::Util::Exception::ErrorType;

std::string DescribeNode(std::uint32_t id, const std::string& name) {
  return "node " + std::to_string(id) + " " + Qov::Util::Quote(name);
}

template <class T, std::size_t N>
void RequireRaw(QovJbf::JbFile& file, std::array<T, N>& values) {
  file.RequireBytes(kLightData, values.data(), sizeof(values));
}

}  // namespace

TreeReader::TreeReader(QovJbf::JbFile& file, NodeTree& nodes, std::uint32_t attachParent,
                       bool wideOffsets)
    : mFile(file),
      mNodes(nodes),
      mAttachParent(attachParent),
      mWideOffsets(wideOffsets),
      mBase(attachParent == 0 ? 0 : nodes.GetNextId() - 1),
      mpHeavy(file.OpenStreamReader(kHeavyData)) {}

UnreadContent TreeReader::Read(Tree::IdMap& idMap) {
  std::int32_t count = 0;
  mFile.Require(kRyxTree, count);
  if (count < 1) Raise(kSource, ErrorType::ModelError, "The tree has no root");
  for (std::int32_t i = 0; i < count; ++i) {
    Record record = ReadRecord();
    const std::uint32_t id = record.mEntry.mId;
    record.mEntry.mData = ReadNode(record);
    Enter(std::move(record), i == 0);
    idMap.emplace(id, id - mBase);
  }
  for (const LoadedGeometry& loaded : mGeometries) {
    loaded.mGeometry->LoadConnectivityBlocks(mpHeavy, loaded.mShuffled);
  }
  for (const LoadedGeometry& loaded : mGeometries) {
    loaded.mGeometry->LoadOtherBlocks(mpHeavy, loaded.mShuffled);
    MarkDanglingLinks(*loaded.mGeometry);
  }
  CheckShares();
  CheckUnreadBytes();
  return std::move(mUnread);
}

/// Refuses arrays that share too many bytes. Counts only complete elements, because an incomplete
/// element is not stored.
void TreeReader::CheckShares() const {
  std::uint64_t numBytes = 0;
  for (const LoadedGeometry& loaded : mGeometries) {
    for (const Geometry::VarStruct& variable : loaded.mGeometry->GetVariables()) {
      if (!variable.mLink.IsLinked()) numBytes += variable.mValues.GetNumElements() * kElementSize;
    }
  }
  if (numBytes / kMostShares <= mpHeavy->GetLength()) return;
  Raise(kSource, ErrorType::OutOfBounds, "Too many arrays share their bytes");
}

/// Marks dangling links, because later files can bring nodes with the ids that these links name.
void TreeReader::MarkDanglingLinks(Geometry& geometry) const {
  for (std::size_t i = 0; i < geometry.GetVariables().size(); ++i) {
    ResultLink& link = geometry.EditVariable(i).mLink;
    if (FindTarget(mNodes, link) == nullptr) link.LoseTarget();
  }
}

TreeReader::Record TreeReader::ReadRecord() {
  Record record;
  NodeTree::Node& entry = record.mEntry;
  for (std::uint32_t* link : {&entry.mId, &entry.mParent, &entry.mPreviousSibling,
                              &entry.mNextSibling, &entry.mFirstChild, &entry.mLastChild}) {
    mFile.Require(kRyxTree, *link);
    *link = Shift(*link);
  }
  if (entry.mParent == 0) entry.mParent = mAttachParent;
  for (std::string* text : {&record.mName, &record.mType, &record.mVersion}) {
    mFile.Require(kRyxTree, *text);
  }
  std::uint64_t lightOffset = 0;
  if (mWideOffsets) {
    mFile.Require(kRyxTree, lightOffset);
  } else {
    std::uint32_t narrow = 0;
    mFile.Require(kRyxTree, narrow);
    lightOffset = narrow;
  }
  if (lightOffset != 0) mFile.SetBlockPosition(kLightData, lightOffset);
  return record;
}

/// Returns false if the shifted id would be the highest one, which stays free so that there is
/// always a next id.
bool TreeReader::CanShift(std::uint32_t id) const {
  return id != 0 && id < std::numeric_limits<std::uint32_t>::max() - mBase;
}

std::uint32_t TreeReader::Shift(std::uint32_t id) const {
  if (id == 0) return 0;
  if (!CanShift(id)) {
    Raise(
        kSource, ErrorType::ModelError,
        "Node id " + std::to_string(id) + " is too high to be shifted by " + std::to_string(mBase));
  }
  return id + mBase;
}

std::unique_ptr<Node> TreeReader::ReadNode(const Record& record) {
  if (record.mType.empty()) return nullptr;
  if (record.mType == Group::kType) return ReadGroup(record);
  if (record.mType == Shape::kType) return ReadShape(record);
  if (record.mType == Geometry::kType) return ReadGeometry(record);
  if (record.mType == NodeSets::kType) return ReadNodeSets(record);
  if (record.mType != FutureNode::kType) NoteUnknown(record);
  return std::make_unique<FutureNode>(record.mName);
}

/// Records that the content of a node is not read. Not called for the type FutureNode::kType, with
/// which nodes of unknown types are saved, because these nodes have no content.
void TreeReader::NoteUnknown(const Record& record) {
  const std::string node = DescribeNode(record.mEntry.mId - mBase, record.mName) +
                           " of the unknown type " + Qov::Util::Quote(record.mType);
  mUnread.Add(node);
  if (mFirstUnknown.empty()) mFirstUnknown = node;
}

void TreeReader::NoteNewerVersion(const Record& record, const std::string& known) {
  if (!IsNewerVersion(record.mVersion, known)) return;
  mUnread.Add(DescribeNode(record.mEntry.mId - mBase, record.mName) + " of the newer version " +
              Qov::Util::Quote(record.mVersion));
}

/// Finds bytes after the last record of a stream. "Attributes" and "Resources" hold the data of the
/// nodes one after the other, so data of a node of unknown type are read as those of the next node.
void TreeReader::CheckUnreadBytes() {
  for (const std::string& stream : {kRyxTree, kAttributes, kResources}) {
    Remaining rest;
    if (!mFile.HasStream(stream)) continue;
    mFile.Require(stream, rest);
    if (rest.mNumBytes == 0) continue;
    if (stream != kRyxTree && !mFirstUnknown.empty()) {
      Raise(kSource, ErrorType::FormatNotSupported,
            "The model cannot be read: " + mFirstUnknown + " may have " +
                (stream == kAttributes ? "attributes" : "materials") +
                ", which cannot be told from those of other nodes");
    }
    mUnread.Add("bytes after the last record of the stream " + Qov::Util::Quote(stream));
  }
}

std::unique_ptr<Node> TreeReader::ReadGroup(const Record& record) {
  auto group = std::make_unique<Group>(record.mName);
  NoteNewerVersion(record, group->GetVersion());
  if (!HasPlacement(record.mVersion)) return group;
  RequireRaw(mFile, group->mTranslation);
  RequireRaw(mFile, group->mRotation);
  RequireRaw(mFile, group->mScale);
  if (!HasAttributes(record.mVersion)) return group;
  QovUtil::ReadAttributesFromJbf(mFile, kAttributes, group->mAttributes);
  if (!HasModelFlag(record.mVersion)) return group;
  mFile.Require(kLightData, group->mTakesModels);
  return group;
}

std::unique_ptr<Node> TreeReader::ReadShape(const Record& record) {
  auto shape = std::make_unique<Shape>(record.mName);
  NoteNewerVersion(record, shape->GetVersion());
  if (HasMaterial(record.mVersion)) mFile.Require(kResources, shape->mMaterial.mValues);
  return shape;
}

std::unique_ptr<Node> TreeReader::ReadGeometry(const Record& record) {
  auto geometry = std::make_unique<Geometry>(record.mName);
  const bool shuffled = !HasInlineValues(GetGeometryLayout(record.mVersion));
  if (!shuffled) SkipPrecedingSets();
  geometry->ReadJb(mFile, kLightData, kAttributes, record.mVersion, mInlineOffset);
  for (const Geometry::VarStruct& variable : geometry->GetVariables()) {
    if (!variable.mLink.IsLinked() && variable.mValues.GetNumElements() != 0) RequireHeavyStream();
  }
  ShiftLinks(*geometry);
  mGeometries.push_back({geometry.get(), shuffled});
  return geometry;
}

std::unique_ptr<Node> TreeReader::ReadNodeSets(const Record& record) {
  auto sets = std::make_unique<NodeSets>(record.mName);
  NoteNewerVersion(record, sets->GetVersion());
  sets->ReadLightData(mFile, kLightData);
  RequireHeavyStream();
  sets->LoadDataBlocks(mpHeavy, mpNumSetBytes);
  mPrecedingSets = sets.get();
  return sets;
}

void TreeReader::RequireHeavyStream() {
  if (!mFile.HasStream(kHeavyData)) Qov::Util::RaiseElementNotFound(kSource);
}

/// Moves the offset of the next inline values to the end of node sets that precede their geometry
/// in the tree, because they precede its values in the heavy stream too.
void TreeReader::SkipPrecedingSets() {
  if (mPrecedingSets == nullptr) return;
  mInlineOffset = mPrecedingSets->GetStoredEnd();
  mPrecedingSets = nullptr;
}

/// Shifts the node ids of links like those of nodes. A dangling link can hold any number; one that
/// cannot be shifted stays as it is.
void TreeReader::ShiftLinks(Geometry& geometry) const {
  for (std::size_t i = 0; i < geometry.GetVariables().size(); ++i) {
    ResultLink& link = geometry.EditVariable(i).mLink;
    const auto [node, position] = link.GetPlace();
    if (CanShift(node)) link.MoveTo({node + mBase, position});
  }
}

void TreeReader::Enter(Record record, bool isFirst) {
  NodeTree::Node& entry = record.mEntry;
  if (isFirst && entry.mId != mBase + NodeTree::kRootId) {
    Raise(kSource, ErrorType::ModelError, "The first node of the tree is not its root");
  }
  if (isFirst && mAttachParent != 0) {
    mNodes.SetCurrentId(mAttachParent);
    NodeTree::Node& child = mNodes.AddChild(std::move(entry.mData));
    child.mNextSibling = entry.mNextSibling;
    child.mFirstChild = entry.mFirstChild;
    child.mLastChild = entry.mLastChild;
    return;
  }
  const NodeTree::Node* present = mNodes.FindNode(entry.mId);
  const bool isEmptyRoot = isFirst && present != nullptr && !present->mData;
  if (entry.mId == 0 || (present != nullptr && !isEmptyRoot)) {
    Raise(kSource, ErrorType::ElementExists,
          "Node id " + std::to_string(entry.mId == 0 ? 0 : entry.mId - mBase) +
              " cannot be entered into the tree");
  }
  mNodes.PutNode(std::move(entry));
}

}  // namespace QovRyx
