#include "TreeLoader.h"

#include <cstdio>
#include <utility>
#include <vector>

#include "LinkFollower.h"
#include "Qov/Log/Record.h"
#include "Qov/Util/Raise.h"
#include "StreamGroups.h"
#include "StreamNames.h"
#include "TreeReader.h"
#include "ViewPathIo.h"
#include "container/ContainerFormat.h"
#include "diagnostics/Printable.h"
#include "records/FileVersionScope.h"

namespace QovRyx {
namespace {

constexpr const char* kSource = "include/Qov/Ryx/Tree";
using Qov::Util::Raise;
using ErrorType = Qov::Util::Exception::ErrorType;

void LogLosses(const QovJbf::ReadLosses& lost, const std::string& path, const char* part) {
  const auto log = [&](std::uint64_t count, const char* one, const char* many) {
    if (count == 0) return;
    Qov::Log::Trace(kSource) << Qov::Util::Quote(path) << ", " << part << ": " << count
                             << (count == 1 ? one : many);
  };
  log(lost.mNumEqualKeys, " map entry is left out because an earlier one has its key",
      " map entries are left out because earlier ones have their keys");
  log(lost.mNumCutTexts, " text is cut at a zero byte", " texts are cut at a zero byte");
}

/// Calls `read`. Counts and logs the data that it leaves out of a part of a file.
template <class Read>
void CountLosses(QovJbf::ReadLosses& losses, const QovJbf::JbFile& file, const char* part,
                 Read read) {
  const QovJbf::ReadLosses before = QovJbf::GetReadLosses();
  read();
  const QovJbf::ReadLosses lost = QovJbf::GetReadLosses() - before;
  losses += lost;
  LogLosses(lost, file.GetPath(), part);
}

void LogLegacyWriter(const std::vector<ModifierInfo>& history, const std::string& path) {
  const ModifierInfo* writer = FindLegacyWriter(history);
  if (writer == nullptr) return;
  Qov::Log::Trace(kSource) << Qov::Util::Quote(path)
                           << ": the probe records have the layout of the build \""
                           << writer->mApplicationVersion
                           << "\" and are kept; once another program is the last entry of the "
                              "history, readers no longer recognise them";
}

std::uint64_t GetFileLength(QovJbf::JbFile& file) {
  const bool isAtEnd = fseeko(file.GetStream(), 0, SEEK_END) == 0;
  const off_t length = isAtEnd ? ftello(file.GetStream()) : -1;
  if (length < 0) Qov::Util::RaiseReadError(kSource);
  return static_cast<std::uint64_t>(length);
}

/// Raises ReadError if the file ends before its last block, even if that block was not read.
void CheckComplete(QovJbf::JbFile& file) {
  QovJbf::Index& index = file.GetIndex();
  const std::size_t last = index.GetItems().size() - 1;
  const std::uint64_t end = index.GetPosition(last) + index.GetItems()[last].mSize;
  if (GetFileLength(file) < end) Qov::Util::RaiseReadError(kSource);
}

}  // namespace

void TreeLoader::Load(const std::string& path, Tree::IdMap& idMap, Tree::ReadMode mode) {
  QovJbf::JbFile file;
  bool wideOffsets = false;
  OpenForReading(file, path, wideOffsets);
  const std::uint32_t attachParent = SelectAttachParent();
  CountLosses(mTree.mLosses.mHistory, file, "history", [&] { LoadGlobalInfo(file); });
  LoadTree(file, idMap, attachParent, wideOffsets);
  UpdateBufferLinks();
  if (mode == Tree::ReadMode::Everything) LoadViews(file);
  CheckComplete(file);
  file.CloseFile();
}

void TreeLoader::LoadViews(QovJbf::JbFile& file) {
  if (!file.HasStream(kViewPoints)) return;
  if (!QovJbf::HasViews(mTree.mFileVersion)) {
    mTree.mUnread.Add("the views of a file of version 0.1");
    return;
  }
  const FileVersionScope scope(mTree.mFileVersion);
  LoadViewPathVec(file);
  LogLegacyWriter(mTree.mModifiers, file.GetPath());
}

void TreeLoader::Merge(const std::string& path) {
  QovJbf::JbFile file;
  bool wideOffsets = false;
  OpenForReading(file, path, wideOffsets);
  Tree::IdMap idMap;
  LoadTree(file, idMap, SelectAttachParent(), wideOffsets);
  CheckComplete(file);
  file.CloseFile();
}

void TreeLoader::OpenForReading(QovJbf::JbFile& file, const std::string& path, bool& wideOffsets) {
  file.OpenFile(path, "rb");
  mTree.mSources.push_back(*file.GetIdentity());
  if (!file.IsJbFile()) {
    Raise(kSource, ErrorType::FormatNotSupported,
          Qov::Util::EscapeName(path) + " is not a Ryx file");
  }
  mTree.mFileVersion = file.ReadVersion();
  QovJbf::JbFile::CheckSupport(mTree.mFileVersion, wideOffsets);
  file.ReadIndex();
  mTree.mUnknownStreams = FindUnknownStreams(file.GetIndex().GetItems());
}

/// Makes the root current. Returns its id if the nodes of files are added below it, otherwise 0.
std::uint32_t TreeLoader::SelectAttachParent() {
  mTree.mNodes.SetCurrentId(NodeTree::kRootId);
  const auto* group = dynamic_cast<const Group*>(mTree.mNodes.GetCurrentNode().mData.get());
  return group != nullptr && group->TakesModels() ? NodeTree::kRootId : 0;
}

void TreeLoader::LoadGlobalInfo(QovJbf::JbFile& file) {
  CheckExpansion(file, kHistoryStreams);
  if (file.HasStream(kGlobalInformation)) {
    std::uint32_t count = 0;
    file.Require(kGlobalInformation, count);
    for (; count > 0; --count) {
      ModifierInfo modifier;
      file.Require(kGlobalInformation, modifier);
      mTree.mModifiers.push_back(std::move(modifier));
    }
  }
  if (!mTree.mModifiers.empty()) g_b217Ryx = IsLegacyWriter(mTree.mModifiers.back());
}

void TreeLoader::LoadTree(QovJbf::JbFile& file, Tree::IdMap& idMap, std::uint32_t attachParent,
                          bool wideOffsets) {
  CheckExpansion(file, kTreeStreams);
  CountLosses(mTree.mLosses.mModel, file, "model", [&] {
    mTree.mUnread = TreeReader(file, mTree.mNodes, attachParent, wideOffsets).Read(idMap);
  });
}

void TreeLoader::UpdateBufferLinks() {
  Qov::Log::Trace(kSource) << "Updating buffer links ...";
  LinkFollower follower = FollowLinks(mTree.mNodes);
  ForEachGeometry(mTree.mNodes, [&follower](std::uint32_t, Geometry& geometry) {
    for (std::size_t i = 0; i < geometry.GetVariables().size(); ++i) {
      Geometry::VarStruct& variable = geometry.EditVariable(i);
      if (!variable.mLink.IsLinked()) continue;
      const Geometry::VarStruct* owner = follower.FindOwner(variable);
      variable.mValues = owner == nullptr ? NumericArray() : owner->mValues;
    }
  });
  Qov::Log::Trace(kSource) << "Buffer links updated.";
}

void TreeLoader::LoadViewPathVec(QovJbf::JbFile& file) {
  if (file.GetIdentity()) mTree.mSources.push_back(*file.GetIdentity());
  if (!file.HasStream(kViewPoints)) return;
  CheckExpansion(file, kViewStreams);
  CountLosses(mTree.mLosses.mViews, file, "views", [&] { ReadViewPaths(file, mTree); });
  mTree.mHasViewPoints = true;
}

}  // namespace QovRyx
