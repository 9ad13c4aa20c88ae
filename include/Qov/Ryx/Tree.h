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
#include "Qov/Ryx/OutputSettings.h"
#include "Qov/Ryx/Sequencer.h"
#include "Qov/Ryx/Shape.h"
#include "Qov/Ryx/ViewPoint.h"

namespace QovRyx {

/// True if the last entry in the history of the file that was loaded last is that of a legacy
/// build, whose probe records have another layout.
QOV_EXPORT extern bool g_b217Ryx;

/// Content of a file that is not read and therefore not saved.
struct UnreadContent {
  std::uint64_t mCount = 0;
  std::vector<std::string> mExamples;  ///< Descriptions of the first few.

  QOV_EXPORT void Add(const std::string& description);
};

/// The tree of the nodes of a model, identified by id. The root entry has no node unless a model
/// puts one there.
using NodeTree = QovAdt::Tree<NodePointer>;

/// One model in memory: the tree of its nodes, its views and its history.
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
/// failed Save the file is incomplete, and only the history of the tree has changed.
class QOV_EXPORT Tree {
 public:
  enum class SupportedFileFormats { Ryx = 0 };
  /// WithoutViews does not read view points and the sequencer, so they may be damaged.
  enum class ReadMode { Everything = 0, WithoutViews = 1 };
  /// Maps the id of each node in the tree to its id in the file.
  using IdMap = std::map<std::uint32_t, std::uint32_t>;

  /// Makes an empty model. With `recordMachine`, Save records the host and the user in the history.
  /// `application` and `applicationVersion` name the program there.
  explicit Tree(bool recordMachine);
  Tree(const std::string& application, const std::string& applicationVersion, bool recordMachine);
  ~Tree();
  Tree(const Tree&) = delete;
  Tree& operator=(const Tree&) = delete;

  /// Reads a model file. `idMap` gets an entry for each of its nodes. If the root is a group for
  /// which Group::TakesModels is true, the nodes are added below it with shifted ids, otherwise
  /// they keep their ids. Views are read according to `mode`.
  void Load(const std::string& path, IdMap& idMap, const ReadMode& mode,
            const SupportedFileFormats& format);
  /// Reads the nodes of a further file, but neither its history nor its views.
  void Merge(const std::string& path, const ReadMode& mode, const SupportedFileFormats& format);
  /// Reads the views of a file: replaces the view point and the sequencer, and appends the paths.
  /// Changes nothing if the file has no views.
  void LoadViewPathVec(QovJbf::JbFile& file);
  /// Appends the same to a file that is being written.
  void SaveViewPathVec(QovJbf::JbFile& file) const;
  /// Writes the model and adds this program to its history. `create` false updates a file in place.
  /// Raises MiscellaneousError if arrays must still be read from the file at `path` or if another
  /// run is writing it. Takes the date of the history entry from SOURCE_DATE_EPOCH if that is set;
  /// raises MiscellaneousError if its value is not a number of seconds. Raises ReadError if a file
  /// that the model was loaded from has changed, and WriteError if `path` does not lead to the
  /// written file at the end.
  void Save(const std::string& path, bool create, const std::string& comment,
            const SupportedFileFormats& format);
  /// Does the same with these settings, except OutputSettings::mOverwrite: an existing file is
  /// replaced. Raises the errors of CheckSettings too, before anything is written. Does not use the
  /// environment variable RYXMERGE_COPY_BLOCKS.
  void Save(const std::string& path, const std::string& comment, const OutputSettings& settings);
  /// Moves a shape of `source` and the geometry that is its first child below the first group of
  /// that name, as its last child. The nodes belong to this tree afterwards. `source` keeps their
  /// entries without nodes. Links within the geometry name its new entry, which becomes current.
  /// Links between it and other geometries are replaced by the values.
  ///
  /// Raises ElementNotFound if there is no such group, no such entry or no child; MismatchError
  /// if the entries hold other nodes; ModelError if there are no ids left. Nothing has been moved
  /// then.
  void AddShape(Tree& source, const std::uint32_t& shapeId, const std::string& groupName);

  /// Returns the entries, which own their nodes. A reference to a node is valid until the node is
  /// replaced or moved away, or the tree is destroyed. Adding entries does not change that. A const
  /// tree gives access to const nodes only.
  NodeTree& GetNodes() { return mNodes; }
  const NodeTree& GetNodes() const { return mNodes; }

  /// Returns true if Save writes the view point, the paths and the sequencer. Reading them sets it.
  bool HasViewPoints() const { return mHasViewPoints; }
  void SetHasViewPoints(bool has) { mHasViewPoints = has; }
  ViewPoint& GetViewPoint() { return mViewPoint; }
  const ViewPoint& GetViewPoint() const { return mViewPoint; }
  std::vector<ViewPointPath>& GetViewPointPaths() { return mViewPointPaths; }
  const std::vector<ViewPointPath>& GetViewPointPaths() const { return mViewPointPaths; }
  SequencerData& GetSequencerData() { return mSequencerData; }
  const SequencerData& GetSequencerData() const { return mSequencerData; }
  /// Returns the programs that wrote the model, oldest first. Save adds this one.
  const std::vector<ModifierInfo>& GetModifiers() const { return mModifiers; }
  /// Removes the last of them, if there is one.
  void RemoveLastModifier() {
    if (!mModifiers.empty()) mModifiers.pop_back();
  }
  /// Counts of the data that was left out when files were read into this tree, by part of the file.
  struct Losses {
    QovJbf::ReadLosses mModel;  ///< Nodes, results and their attributes.
    QovJbf::ReadLosses mHistory;
    QovJbf::ReadLosses mViews;  ///< View points and sequencer.
  };
  const Losses& GetLosses() const { return mLosses; }
  /// Returns the container version of the file that was loaded or saved last.
  const std::string& GetFileVersion() const { return mFileVersion; }
  /// Returns the names of the streams that no reader uses and that the last Load or Merge found
  /// (StreamNames.h). Save does not write them.
  const std::vector<std::string>& GetUnknownStreams() const { return mUnknownStreams; }
  /// Returns the content of the file read last that this version cannot read: nodes of unknown
  /// types and newer versions, and bytes after the last record of a stream.
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

/// Returns the geometry of an entry, or null for an entry of any other node or none.
inline Geometry* AsGeometry(NodeTree::Node& entry) {
  return dynamic_cast<Geometry*>(entry.mData.get());
}
inline const Geometry* AsGeometry(const NodeTree::Node& entry) {
  return dynamic_cast<const Geometry*>(entry.mData.get());
}

/// Returns the result at a place, or null if there is none.
QOV_EXPORT const Geometry::VarStruct* FindVariable(const NodeTree& nodes, const ResultPlace& place);

/// Returns the result that a link names, or null if the link is dangling or if there is no link.
QOV_EXPORT const Geometry::VarStruct* FindTarget(const NodeTree& nodes, const ResultLink& link);

/// Calls `visit(id, geometry)` for every geometry, in ascending order of ids. `nodes` is a
/// NodeTree; a const one gives const geometries.
template <class Nodes, class Visitor>
void ForEachGeometry(Nodes& nodes, Visitor visit) {
  for (auto& [id, entry] : nodes) {
    if (auto* geometry = AsGeometry(entry)) visit(id, *geometry);
  }
}

}  // namespace QovRyx
