#include "Qov/Ryx/Tree.h"

#include <cstdlib>

#include "MoveShape.h"
#include "Qov/Util/FileContext.h"
#include "StreamGroups.h"
#include "StreamNames.h"
#include "TreeLoader.h"
#include "TreeSaver.h"
#include "ViewPathIo.h"
#include "container/LoadLimit.h"

namespace QovRyx {

bool g_b217Ryx = false;

Tree::Tree(bool recordMachine) {
  mCurrentModifier.mRecordMachine = recordMachine;
  // Makes later random numbers of the process the same in every run.
  std::srand(0);  // NOLINT(cert-msc51-cpp): a constant seed is intended
  mViewPoint.mName = "no name";
}

Tree::Tree(const std::string& application, const std::string& applicationVersion,
           bool recordMachine)
    : Tree(recordMachine) {
  mCurrentModifier.mApplication = application;
  mCurrentModifier.mApplicationVersion = applicationVersion;
}

Tree::~Tree() = default;

void Tree::Load(const std::string& path, IdMap& idMap, const ReadMode& mode,
                const SupportedFileFormats& format) {
  if (format != SupportedFileFormats::Ryx) return;
  Qov::Util::WithFileContext(path, [&] { TreeLoader(*this).Load(path, idMap, mode); });
}

void Tree::Merge(const std::string& path, const ReadMode& /*mode*/,
                 const SupportedFileFormats& format) {
  if (format != SupportedFileFormats::Ryx) return;
  Qov::Util::WithFileContext(path, [&] { TreeLoader(*this).Merge(path); });
}

void Tree::LoadViewPathVec(QovJbf::JbFile& file) { TreeLoader(*this).LoadViewPathVec(file); }

void Tree::SaveViewPathVec(QovJbf::JbFile& file) const {
  WriteViewPaths(file, *this);
  CheckLoadable(file, kViewStreams, QovJbf::GetLoadLimit());
  file.AddBlockTransformation(kViewPoints, QovJbf::BlockFlag::kCompressed);
}

void Tree::Save(const std::string& path, bool create, const std::string& comment,
                const SupportedFileFormats& format) {
  if (format != SupportedFileFormats::Ryx) return;
  TreeSaver(*this, {}, GetCopySettings()).Save(path, create, comment);
}

void Tree::Save(const std::string& path, const std::string& comment,
                const OutputSettings& settings) {
  SaveAll saver;
  SaveWith(saver, *this, path, comment, settings);
}

void Tree::AddShape(Tree& source, const std::uint32_t& shapeId, const std::string& groupName) {
  MoveShape(mNodes, source.mNodes, shapeId, groupName, true);
}

const Geometry::VarStruct* FindVariable(const NodeTree& nodes, const ResultPlace& place) {
  const NodeTree::Node* entry = nodes.FindNode(place.mNode);
  const Geometry* geometry = entry == nullptr ? nullptr : AsGeometry(*entry);
  if (geometry == nullptr || place.mPosition >= geometry->GetVariables().size()) return nullptr;
  return &geometry->GetVariables()[place.mPosition];
}

const Geometry::VarStruct* FindTarget(const NodeTree& nodes, const ResultLink& link) {
  return link.HasTarget() ? FindVariable(nodes, link.GetPlace()) : nullptr;
}

void UnreadContent::Add(const std::string& description) {
  constexpr std::size_t kMostExamples = 8;
  if (++mCount <= kMostExamples) mExamples.push_back(description);
}

}  // namespace QovRyx
