#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "LinkResolver.h"
#include "Qov/Log/Record.h"
#include "Qov/Ryx/FileVersionScope.h"
#include "Qov/Ryx/StreamNames.h"
#include "Qov/Ryx/Tree.h"
#include "Qov/Util/Printable.h"
#include "Qov/Util/Raise.h"
#include "StreamGroups.h"
#include "TreeReader.h"
#include "container/ContainerFormat.h"

namespace QovRyx {
namespace {

constexpr const char* kSource = "include/Qov/Ryx/Tree";
using Qov::Util::Raise;
using ErrorType = Qov::Util::Exception::ErrorType;

void TellLosses(const QovJbf::ReadLosses& lost, const std::string& path, const char* part) {
  const auto tell = [&](std::uint64_t count, const char* one, const char* many) {
    if (count == 0) return;
    Qov::Log::Trace(kSource) << Qov::Util::Quote(path) << ", " << part << ": " << count
                             << (count == 1 ? one : many);
  };
  tell(lost.mNumEqualKeys, " map entry is left out because an earlier one has its key",
       " map entries are left out because earlier ones have their keys");
  tell(lost.mNumCutTexts, " text is cut at a zero byte", " texts are cut at a zero byte");
}

/// Calls `read`. Counts and logs the data that it leaves out of a part of a file.
template <class Read>
void CountLosses(QovJbf::ReadLosses& losses, const QovJbf::JbFile& file, const char* part,
                 Read read) {
  const QovJbf::ReadLosses before = QovJbf::GetReadLosses();
  read();
  const QovJbf::ReadLosses lost = QovJbf::GetReadLosses() - before;
  losses += lost;
  TellLosses(lost, file.GetPath(), part);
}

void TellLegacyWriter(const std::vector<ModifierInfo>& history, const std::string& path) {
  const ModifierInfo* writer = FindLegacyWriter(history);
  if (writer == nullptr) return;
  Qov::Log::Trace(kSource) << Qov::Util::Quote(path)
                           << ": the probe records have the layout of the build \""
                           << writer->mApplicationVersion
                           << "\" and are kept; once another program is the last entry of the "
                              "history, readers no longer recognise them";
}

/// A signed count in the view-point stream; nothing is read for a negative one.
std::int32_t RequireCount(QovJbf::JbFile& file) {
  std::int32_t count = 0;
  file.Require(kViewPoints, count);
  return count;
}

ViewPointPath RequireViewPointPath(QovJbf::JbFile& file) {
  ViewPointPath path;
  file.Require(kViewPoints, path.mName);
  for (std::int32_t left = RequireCount(file); left > 0; --left) {
    ViewPoint viewPoint;
    file.Require(kViewPoints, viewPoint);
    path.mViewPoints.push_back(std::move(viewPoint));
  }
  return path;
}

/// Reserves room for `count` more paths if the stream can hold them, so that the vector takes no
/// more memory than they need.
void ReservePaths(QovJbf::JbFile& file, std::int32_t count, std::vector<ViewPointPath>& paths) {
  constexpr std::uint64_t kLeastSize = 8;  // an empty name and no views
  const std::uint64_t most = file.OpenStreamReader(kViewPoints)->GetLength() / kLeastSize;
  if (count <= 0 || static_cast<std::uint64_t>(count) > most) return;
  const std::size_t needed = paths.size() + static_cast<std::size_t>(count);
  if (needed > paths.capacity()) paths.reserve(std::max(needed, paths.size() * 3 / 2));
}

std::uint64_t GetFileLength(QovJbf::JbFile& file) {
  const bool isAtEnd = fseeko(file.GetStream(), 0, SEEK_END) == 0;
  const off_t length = isAtEnd ? ftello(file.GetStream()) : -1;
  if (length < 0) Raise(kSource, ErrorType::ReadError, "Unable to read from file");
  return static_cast<std::uint64_t>(length);
}

/// Refuses streams that would take too much memory, because they are read completely and zlib can
/// expand one byte to a thousand.
void CheckExpansion(QovJbf::JbFile& file, const StreamGroup& group) {
  std::uint64_t numBytes = 0;
  for (const std::string& name : group.mStreams) {
    numBytes += file.OpenStreamReader(name)->GetLength();
  }
  CheckLoadLimit(group, numBytes, QovJbf::GetLoadLimit());
}

/// Refuses a file that ends before its last block does, even if nothing was read from there.
void CheckComplete(QovJbf::JbFile& file) {
  QovJbf::Index& index = file.GetIndex();
  const std::size_t last = index.GetItems().size() - 1;
  const std::uint64_t end = index.GetPosition(last) + index.GetItems()[last].mSize;
  if (GetFileLength(file) < end) Raise(kSource, ErrorType::ReadError, "Unable to read from file");
}

}  // namespace

void Tree::Load(const std::string& path, IdMap& idMap, const ReadMode& mode,
                const SupportedFileFormats& format) {
  if (format != SupportedFileFormats::Ryx) return;
  Qov::Util::WithFileContext(path, [&] { LoadFile(path, idMap, mode); });
}

void Tree::Merge(const std::string& path, const ReadMode& mode,
                 const SupportedFileFormats& format) {
  static_cast<void>(mode);  // views are left out anyway
  if (format != SupportedFileFormats::Ryx) return;
  Qov::Util::WithFileContext(path, [&] { MergeFile(path); });
}

void Tree::LoadFile(const std::string& path, IdMap& idMap, ReadMode mode) {
  QovJbf::JbFile file;
  bool wideOffsets = false;
  OpenForReading(file, path, wideOffsets);
  const std::uint32_t attachParent = GetAttachParent();
  CountLosses(mLosses.mHistory, file, "history", [&] { LoadGlobalInfo(file); });
  LoadTree(file, idMap, attachParent, wideOffsets);
  UpdateBufferLinks();
  if (mode == ReadMode::Everything) LoadViews(file);
  CheckComplete(file);
  file.CloseFile();
}

void Tree::LoadViews(QovJbf::JbFile& file) {
  if (!file.HasStream(kViewPoints)) return;
  if (!QovJbf::HasViews(mFileVersion)) {
    mUnread.Add("the views of a file of version 0.1");
    return;
  }
  const FileVersionScope scope(mFileVersion);
  LoadViewPathVec(file);
  TellLegacyWriter(mModifiers, file.GetPath());
}

void Tree::MergeFile(const std::string& path) {
  QovJbf::JbFile file;
  bool wideOffsets = false;
  OpenForReading(file, path, wideOffsets);
  IdMap idMap;
  LoadTree(file, idMap, GetAttachParent(), wideOffsets);
  CheckComplete(file);
  file.CloseFile();
}

void Tree::OpenForReading(QovJbf::JbFile& file, const std::string& path, bool& wideOffsets) {
  file.OpenFile(path, "rb");
  mSources.push_back(*file.GetIdentity());
  if (!file.IsJbFile()) {
    Raise(kSource, ErrorType::FormatNotSupported,
          Qov::Util::EscapeName(path) + " is not a Ryx file");
  }
  mFileVersion = file.ReadVersion();
  QovJbf::JbFile::CheckSupport(mFileVersion, wideOffsets);
  file.ReadIndex();
  mUnknownStreams = FindUnknownStreams(file.GetIndex().GetItems());
}

/// 1 if the root takes the nodes of files in beneath it, else 0.
std::uint32_t Tree::GetAttachParent() {
  mNodes.SetCurrentId(NodeTree::kRootId);
  const auto* group = dynamic_cast<const Group*>(mNodes.GetCurrentNode().mData.get());
  return group != nullptr && group->TakesModels() ? NodeTree::kRootId : 0;
}

void Tree::LoadGlobalInfo(QovJbf::JbFile& file) {
  CheckExpansion(file, kHistoryStreams);
  if (file.HasStream(kGlobalInformation)) {
    std::uint32_t count = 0;
    file.Require(kGlobalInformation, count);
    for (; count > 0; --count) {
      ModifierInfo modifier;
      file.Require(kGlobalInformation, modifier);
      mModifiers.push_back(std::move(modifier));
    }
  }
  if (!mModifiers.empty()) g_b217Ryx = IsLegacyWriter(mModifiers.back());
}

void Tree::LoadTree(QovJbf::JbFile& file, IdMap& idMap, std::uint32_t attachParent,
                    bool wideOffsets) {
  CheckExpansion(file, kTreeStreams);
  CountLosses(mLosses.mModel, file, "model",
              [&] { mUnread = TreeReader(file, mNodes, attachParent, wideOffsets).Read(idMap); });
}

void Tree::UpdateBufferLinks() {
  Qov::Log::Trace(kSource) << "Updating buffer links ...";
  LinkResolver resolver(mNodes);
  ForEachGeometry(mNodes, [&resolver](std::uint32_t, Geometry& geometry) {
    for (std::size_t i = 0; i < geometry.GetVariables().size(); ++i) {
      Geometry::VarStruct& variable = geometry.EditVariable(i);
      if (!variable.mLinked) continue;
      const Geometry::VarStruct* target =
          variable.mLeadsNowhere ? nullptr : resolver.Resolve(variable.mLink);
      variable.mValues = target == nullptr ? NumericArray() : target->mValues;
    }
  });
  Qov::Log::Trace(kSource) << "Buffer links updated.";
}

void Tree::LoadViewPathVec(QovJbf::JbFile& file) {
  if (file.GetIdentity()) mSources.push_back(*file.GetIdentity());
  if (!file.HasStream(kViewPoints)) return;
  CheckExpansion(file, kViewStreams);
  CountLosses(mLosses.mViews, file, "views", [&] { ReadViews(file); });
  mHasViewPoints = true;
}

void Tree::ReadViews(QovJbf::JbFile& file) {
  ViewPoint viewPoint;
  file.Require(kViewPoints, viewPoint);
  mViewPoint = std::move(viewPoint);
  std::int32_t numPaths = RequireCount(file);
  ReservePaths(file, numPaths, mViewPointPaths);
  for (; numPaths > 0; --numPaths) mViewPointPaths.push_back(RequireViewPointPath(file));
  SequencerData sequencerData;
  file.Require(kViewPoints, sequencerData);
  mSequencerData = std::move(sequencerData);
}

}  // namespace QovRyx
