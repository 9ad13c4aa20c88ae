#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Qov/Adt/AdtTree.h"
#include "Qov/Export.h"
#include "Qov/Jbf/JbFile.h"
#include "Qov/Ryx/Geometry.h"
#include "Qov/Ryx/Group.h"
#include "Qov/Ryx/ModifierInfo.h"
#include "Qov/Ryx/Node.h"
#include "Qov/Ryx/NodeSets.h"
#include "Qov/Ryx/Sequencer.h"
#include "Qov/Ryx/Shape.h"
#include "Qov/Ryx/ViewPoint.h"

namespace QovRyx {

/// Whether the last writer of the file that was loaded last was one of the legacy builds whose
/// probe records differ.
QOV_EXPORT extern bool g_b217Ryx;

/// Content of a file that is not read and so left out of what is saved.
struct UnreadContent {
  std::uint64_t mCount = 0;
  std::vector<std::string> mExamples;  ///< Descriptions of the first few.

  QOV_EXPORT void Add(const std::string& description);
};

/// The id-keyed tree of a model. The root entry carries no node unless a model puts one there.
using NodeTree = QovAdt::Tree<std::unique_ptr<Node>>;

/// One model in memory: the tree of nodes and the state of the model as a whole.
///
/// Loading reads descriptors. Arrays and node sets stay in the file and are read when they are
/// requested or when the model is saved. The files of a model must therefore stay unchanged while
/// it exists: Save raises ReadError, which names the file, if a file has changed since it was
/// opened. All trees of a process and their arrays must be used on one thread, and only one tree
/// may be loaded or saved at a time, because the log, the file handles and the version that is
/// being read belong to the process.
///
/// Every error is a Qov::Util::Exception (or QovJbf::DamagedBlock for a block that zlib
/// refuses). After a failed Load or Merge the tree holds part of the file: discard it. After a
/// failed Save the file is incomplete and the tree is as before but for its history.
class QOV_EXPORT Tree {
 public:
  enum class SupportedFileFormats { Ryx = 0 };
  /// WithoutViews skips view points and sequencer, so that they may be damaged.
  enum class ReadMode { Everything = 0, WithoutViews = 1 };
  /// From the id that a node has in the tree to the one it had in the file.
  using IdMap = std::map<std::uint32_t, std::uint32_t>;

  /// An empty model. With `recordMachine` saving notes the host and the user in the history.
  explicit Tree(bool recordMachine);
  Tree(const std::string& application, const std::string& applicationVersion, bool recordMachine);
  ~Tree();
  Tree(const Tree&) = delete;
  Tree& operator=(const Tree&) = delete;

  /// Reads a model file; `idMap` gets an entry for each of its nodes. If the root carries a group
  /// that takes models, the file's nodes are entered beneath it with shifted ids, else with the
  /// ids of the file.
  void Load(const std::string& path, IdMap& idMap, const ReadMode& mode,
            const SupportedFileFormats& format);
  /// Reads a further file's nodes; its history and views are left out.
  void Merge(const std::string& path, const ReadMode& mode, const SupportedFileFormats& format);
  /// Reads the view point, the paths (appended to those that are there) and the sequencer of a
  /// file; changes nothing if it has none.
  void LoadViewPathVec(QovJbf::JbFile& file);
  /// Puts what LoadViewPathVec reads into a file that is being written.
  void SaveViewPathVec(QovJbf::JbFile& file) const;
  /// Writes the model and adds this program to its history. `create` false updates a file in place.
  /// Raises MiscellaneousError if arrays must still be read from the file at `path` or if another
  /// run is writing it. Takes the date of the history entry from SOURCE_DATE_EPOCH if that is set;
  /// raises MiscellaneousError if its value is not a number of seconds. Raises ReadError if a file
  /// that the model was loaded from has changed, and WriteError if `path` does not lead to the
  /// written file at the end.
  void Save(const std::string& path, bool create, const std::string& comment,
            const SupportedFileFormats& format);
  /// Moves a shape of `source` and the geometry that is its first child below the first group of
  /// that name, as its last child. The objects belong to this tree afterwards and `source` keeps
  /// their entries, empty. Links among the geometry's own results lead to its new entry, which
  /// becomes current. Links between it and other geometries are replaced by the values.
  ///
  /// Raises ElementNotFound if there is no such group, no such entry or no child; MismatchError
  /// if the entries carry something else; ModelError if there are no ids left. Nothing has been
  /// moved then.
  void AddShape(Tree& source, const std::uint32_t& shapeId, const std::string& groupName);

  /// The entries and what they carry, which they own: references last until the entry's node is
  /// replaced or moved away, or the tree is gone. Adding entries leaves them valid.
  NodeTree& GetNodes() { return mNodes; }
  const NodeTree& GetNodes() const { return mNodes; }

  /// Whether Save writes the view point, the paths and the sequencer. Reading them says yes.
  bool HasViewPoints() const { return mHasViewPoints; }
  void SetHasViewPoints(bool has) { mHasViewPoints = has; }
  ViewPoint& GetViewPoint() { return mViewPoint; }
  const ViewPoint& GetViewPoint() const { return mViewPoint; }
  std::vector<ViewPointPath>& GetViewPointPaths() { return mViewPointPaths; }
  const std::vector<ViewPointPath>& GetViewPointPaths() const { return mViewPointPaths; }
  SequencerData& GetSequencerData() { return mSequencerData; }
  const SequencerData& GetSequencerData() const { return mSequencerData; }
  /// The programs that wrote the model, oldest first; Save adds this one.
  const std::vector<ModifierInfo>& GetModifiers() const { return mModifiers; }
  /// Counts of the data that was left out when files were read into this tree, by part of the file.
  struct Losses {
    QovJbf::ReadLosses mModel;  ///< Nodes, results and their attributes.
    QovJbf::ReadLosses mHistory;
    QovJbf::ReadLosses mViews;  ///< View points and sequencer.
  };
  const Losses& GetLosses() const { return mLosses; }
  /// The container version of the file last loaded or saved.
  const std::string& GetFileVersion() const { return mFileVersion; }
  /// Returns the names of the streams that no reader uses and that the last Load or Merge found
  /// (StreamNames.h). Save does not write them.
  const std::vector<std::string>& GetUnknownStreams() const { return mUnknownStreams; }
  /// Returns what the nodes of the file that was read last hold and no program of this version
  /// reads: nodes of unknown types and newer versions, bytes after the last record of a stream.
  const UnreadContent& GetUnreadContent() const { return mUnread; }

 private:
  friend class TreeLoader;
  friend class TreeSaver;

  NodeTree mNodes;
  bool mHasViewPoints = false;
  ViewPoint mViewPoint;
  std::vector<ViewPointPath> mViewPointPaths;
  SequencerData mSequencerData;
  Losses mLosses;
  std::string mFileVersion;
  std::vector<std::string> mUnknownStreams;
  UnreadContent mUnread;
  std::vector<QovJbf::FileIdentity> mSources;  ///< The loaded files.
  std::vector<ModifierInfo> mModifiers;
  ModifierInfo mCurrentModifier;
};

/// The geometry that an entry carries, or null if it carries something else.
inline Geometry* AsGeometry(const NodeTree::Node& entry) {
  return dynamic_cast<Geometry*>(entry.mData.get());
}

/// The variable that a link names, or null if it names nothing.
QOV_EXPORT const Geometry::VarStruct* FindVariable(const NodeTree& nodes,
                                                   const Geometry::Link& link);

/// Calls `visit(id, geometry)` for every geometry, in ascending id order.
template <class Visitor>
void ForEachGeometry(const NodeTree& nodes, Visitor visit) {
  for (const auto& [id, entry] : nodes) {
    if (Geometry* geometry = AsGeometry(entry)) visit(id, *geometry);
  }
}

}  // namespace QovRyx
