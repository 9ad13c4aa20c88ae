#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Reads the records of one file's tree and enters them into a model.
class TreeReader {
 public:
  /// If `attachParent` is 0, nodes keep the ids of the file. Otherwise ids are shifted after those
  /// of the model, and the root of the file becomes a child of that entry.
  TreeReader(QovJbf::JbFile& file, NodeTree& nodes, std::uint32_t attachParent, bool wideOffsets);

  /// Enters all nodes and returns the content that was not read. Raises FormatNotSupported if nodes
  /// of unknown types may have attributes or materials, because nothing distinguishes them from
  /// those of later nodes.
  UnreadContent Read(Tree::IdMap& idMap);

 private:
  struct Record {
    NodeTree::Node mEntry;
    std::string mName;
    std::string mType;
    std::string mVersion;
  };
  struct LoadedGeometry {
    Geometry* mGeometry;
    bool mShuffled;
  };

  Record ReadRecord();
  bool CanShift(std::uint32_t id) const;
  std::uint32_t Shift(std::uint32_t id) const;
  std::unique_ptr<Node> ReadNode(const Record& record);
  std::unique_ptr<Node> ReadGroup(const Record& record);
  std::unique_ptr<Node> ReadShape(const Record& record);
  std::unique_ptr<Node> ReadGeometry(const Record& record);
  std::unique_ptr<Node> ReadNodeSets(const Record& record);
  void ShiftLinks(Geometry& geometry) const;
  void MarkDanglingLinks(Geometry& geometry) const;
  void CheckShares() const;
  void Enter(Record record, bool isFirst);
  void RequireHeavyStream();
  void NoteUnknown(const Record& record);
  void NoteNewerVersion(const Record& record, const std::string& known);
  void CheckUnreadBytes();
  void SkipPrecedingSets();

  QovJbf::JbFile& mFile;
  NodeTree& mNodes;
  std::uint32_t mAttachParent;
  bool mWideOffsets;
  std::uint32_t mBase;
  std::shared_ptr<QovJbf::StreamReader> mpHeavy;
  /// The bytes of all node sets that have been read.
  std::shared_ptr<std::uint64_t> mpNumSetBytes = std::make_shared<std::uint64_t>(0);
  std::vector<LoadedGeometry> mGeometries;
  /// The offset of the next inline values, and node sets that must be skipped before them, or null.
  std::uint64_t mInlineOffset = 0;
  const NodeSets* mPrecedingSets = nullptr;
  UnreadContent mUnread;
  std::string mFirstUnknown;  ///< The first node of an unknown type, for messages.
};

}  // namespace QovRyx
