#include "TreeSaver.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <set>

#include "AttributesIo.h"
#include "HeavyPass.h"
#include "HistoryDate.h"
#include "Qov/Log/Record.h"
#include "Qov/Ryx/Progress.h"
#include "Qov/Util/Assert.h"
#include "Qov/Util/Raise.h"
#include "StreamGroups.h"
#include "StreamNames.h"
#include "container/Limits.h"
#include "container/LoadLimit.h"
#include "diagnostics/Printable.h"

namespace QovRyx {
namespace {

constexpr const char* kSource = "include/Qov/Ryx/Tree";
/// Bytes of blocks that are decompressed ahead while others are compressed.
constexpr std::uint64_t kReadAheadMemory = std::uint64_t{128} << 20;

std::string GetHostName() {
  std::array<char, 80> name{};
  return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

std::string GetUserName() {
  const char* name = getlogin();
  return name == nullptr ? "" : name;
}

template <class T, std::size_t N>
void PutRaw(QovJbf::Index& index, const std::array<T, N>& values) {
  index.Put(kLightData, values.data(), sizeof(values));
}

void SaveGroup(QovJbf::JbFile& file, const Group& group) {
  PutRaw(file.GetIndex(), group.mTranslation);
  PutRaw(file.GetIndex(), group.mRotation);
  PutRaw(file.GetIndex(), group.mScale);
  QovUtil::WriteAttributesToJbf(file, kAttributes, group.mAttributes);
  file.GetIndex().Put(kLightData, group.mTakesModels);
}

/// Writes the content of a node. Readers rely on its type string, so the type must be true.
void SavePayload(QovJbf::JbFile& file, const Node& node) {
  // NOLINTBEGIN(modernize-use-nullptr,readability-identifier-naming): the texts are shown
  const std::string type = node.GetType();
  if (type == Group::kType) {
    const auto* grp_ptr = dynamic_cast<const Group*>(&node);
    QOV_ASSERT(0 != grp_ptr);
    SaveGroup(file, *grp_ptr);
  } else if (type == Shape::kType) {
    const auto* shape_ptr = dynamic_cast<const Shape*>(&node);
    QOV_ASSERT(0 != shape_ptr);
    file.GetIndex().Put(kResources, shape_ptr->mMaterial.mValues);
  } else if (type == Geometry::kType) {
    const auto* geom_ptr = dynamic_cast<const Geometry*>(&node);
    QOV_ASSERT(0 != geom_ptr);
    geom_ptr->WriteJb(file, kLightData, kHeavyData, kAttributes, geom_ptr->GetVersion());
  } else if (type == NodeSets::kType) {
    const auto* node_sets_ptr = dynamic_cast<const NodeSets*>(&node);
    QOV_ASSERT(0 != node_sets_ptr);
    node_sets_ptr->WriteLightData(file, kLightData);
  }
  // NOLINTEND(modernize-use-nullptr,readability-identifier-naming)
}

void SaveRecord(QovJbf::JbFile& file, const NodeTree::Node& entry) {
  QovJbf::Index& index = file.GetIndex();
  for (const std::uint32_t link : {entry.mId, entry.mParent, entry.mPreviousSibling,
                                   entry.mNextSibling, entry.mFirstChild, entry.mLastChild}) {
    index.Put(kRyxTree, link);
  }
  const Node* node = entry.mData.get();
  index.Put(kRyxTree, node == nullptr ? std::string() : node->GetName());
  index.Put(kRyxTree, node == nullptr ? std::string() : node->GetType());
  index.Put(kRyxTree, node == nullptr ? std::string() : node->GetVersion());
  index.Put(kRyxTree, index.GetStreamLength(kLightData));
  if (node != nullptr) SavePayload(file, *entry.mData);
}

/// Returns the readers of all files that hold values of the model.
std::set<QovJbf::StreamReader*> FindReaders(const NodeTree& nodes) {
  std::set<QovJbf::StreamReader*> readers;
  ForEachGeometry(nodes, [&readers](std::uint32_t, const Geometry& geometry) {
    for (const Geometry::VarStruct& variable : geometry.GetVariables()) {
      const auto& loader = variable.mValues.GetLoader();
      if (loader) readers.insert(&loader->GetReader());
    }
  });
  for (const auto& [id, entry] : nodes) {
    const auto* sets = dynamic_cast<const NodeSets*>(entry.mData.get());
    if (sets != nullptr && sets->GetReader() != nullptr) readers.insert(sets->GetReader());
  }
  return readers;
}

/// Returns the block size of `OutputSettings` by default, in bytes: whole MiB, from 1 to 8, so that
/// there is work for many threads.
std::uint32_t ChooseBlockSize(const NodeTree& nodes) {
  constexpr std::uint64_t kFewBlocks = 32;
  constexpr std::uint64_t kStep = std::uint64_t{1} << 20;
  constexpr std::uint64_t kMost = 8 * kStep;
  const std::uint64_t size = CountHeavyBytes(nodes) / kFewBlocks / kStep * kStep;
  return static_cast<std::uint32_t>(std::clamp(size, kStep, kMost));
}

}  // namespace

void TreeSaver::Save(const std::string& path, bool create, const std::string& comment) {
  FormatHistoryDate();  // raises for an unusable SOURCE_DATE_EPOCH before anything is written
  RefuseToOverwriteSources(path);
  CheckSources();
  // A file that is updated in place is a different file afterwards.
  std::erase_if(mTree.mSources, [&path](const auto& source) { return source.IsFileAt(path); });
  ClearDanglingLinks();
  mTree.mFileVersion = QovJbf::kCurrentFileVersion;
  if (WriteWithAllThreads(path, create, comment)) return;
  Qov::Log::Trace(kSource) << "There is not enough memory for several threads; saving with one ...";
  QovJbf::JbFile file;
  file.GetIndex().LimitThreads(1);
  Write(file, path, create, comment);
}

/// Returns false if memory was short and fewer threads need less of it.
bool TreeSaver::WriteWithAllThreads(const std::string& path, bool create,
                                    const std::string& comment) {
  const std::size_t numModifiers = mTree.mModifiers.size();
  QovJbf::JbFile file;
  const auto canUseFewer = [&] { return file.GetIndex().GetNumThreads() > 1; };
  try {
    Write(file, path, create, comment);
    return true;
  } catch (const std::bad_alloc&) {
    if (!canUseFewer()) throw;
  } catch (const Qov::Util::Exception& error) {
    const bool isMemory = error.GetType() == Qov::Util::Exception::ErrorType::MemoryAllocationError;
    if (!isMemory || !canUseFewer()) throw;
  }
  mTree.mModifiers.resize(numModifiers);
  return false;
}

void TreeSaver::Write(QovJbf::JbFile& file, const std::string& path, bool create,
                      const std::string& comment) {
  file.GetIndex().SetWriting(mSettings);
  file.OpenFile(path, create ? "wb+" : "rb+");
  file.WriteHeader();
  const ProgressReport report(CountHeavyBytes(mTree.mNodes));
  SaveHeavyBlocks(file, true);
  FlushAndClose(file, comment);
}

void TreeSaver::RefuseToOverwriteSources(const std::string& path) const {
  for (const QovJbf::StreamReader* reader : FindReaders(mTree.mNodes)) {
    if (reader->ReadsFrom(path)) {
      Qov::Util::Raise(kSource, Qov::Util::Exception::ErrorType::MiscellaneousError,
                       "Output file " + Qov::Util::Quote(path) + " is also an input");
    }
  }
}

/// Raises ReadError if a file that the model was loaded from has changed since it was first opened.
void TreeSaver::CheckSources() const {
  for (const QovJbf::FileIdentity& source : mTree.mSources) source.CheckUnchanged();
  for (const QovJbf::StreamReader* reader : FindReaders(mTree.mNodes)) {
    reader->GetIdentity().CheckUnchanged();
  }
}

/// Makes a dangling link name nothing if another file has put a result at its place, because the
/// result must not get values of another file.
void TreeSaver::ClearDanglingLinks() {
  ForEachGeometry(mTree.mNodes, [this](std::uint32_t, Geometry& geometry) {
    for (std::size_t i = 0; i < geometry.GetVariables().size(); ++i) {
      ResultLink& link = geometry.EditVariable(i).mLink;
      if (FindVariable(mTree.mNodes, link.GetPlace()) != nullptr) link.ClearDanglingPlace();
    }
  });
}

void TreeSaver::SaveHeavyBlocks(QovJbf::JbFile& file, bool shuffle) {
  HeavyPass pass(file, shuffle, CountHeavyBytes(mTree.mNodes));
  if (mCopies.mCopying != BlockCopying::Never) pass.CopyBlocks(mTree.mNodes, mCopies);
  mpSaver == nullptr ? SaveByTree(pass) : SaveListed(pass);
  for (QovJbf::StreamReader* reader : FindReaders(mTree.mNodes)) {
    Qov::Util::WithFileContext(reader->GetPath(), [this, reader] {
      reader->Verify();
      // A wrong length of a skipped block would give an array the bytes of another one. If copied
      // blocks are not checked, the lengths are trusted, because verifying them means decompressing
      // them.
      if (mCopies.mCopying == BlockCopying::Never || mCopies.mCheck) {
        reader->VerifyBefore(reader->GetEndOfReads());
      }
    });
  }
}

void TreeSaver::SaveByTree(HeavyPass& pass) {
  ForEachGeometry(mTree.mNodes, [&pass](std::uint32_t, Geometry& geometry) {
    geometry.SaveConnectivityBlocks(pass);
  });
  ForEachGeometry(mTree.mNodes,
                  [&pass](std::uint32_t, Geometry& geometry) { geometry.SaveOtherBlocks(pass); });
  // Node sets are saved here, because full blocks can still be written to the file.
  for (auto& [id, entry] : mTree.mNodes) {
    if (auto* sets = dynamic_cast<NodeSets*>(entry.mData.get())) pass.SaveNodeSets(*sets);
  }
}

void TreeSaver::SaveListed(HeavyPass& pass) {
  const std::uint32_t blockSize =
      mSettings.mBlockLimit != 0
          ? mSettings.mBlockLimit
          : QovJbf::ReadSizeVariable("TELMORAX_MAX_RYX_BLOCK_SIZE", mSettings.mUsualBlockLimit);
  std::vector<HeavyItem> items = ListForSave(mTree.mNodes, blockSize);
  std::erase_if(items, [&pass](const HeavyItem& item) { return pass.IsCopied(item); });
  QovJbf::ReadAhead ahead(PlanReads(items, mpSaver->GetLargestReadOnce()), kReadAheadMemory);
  ahead.Start();
  mpSaver->Save(mTree.mNodes, items, pass);
}

void TreeSaver::FlushAndClose(QovJbf::JbFile& file, const std::string& comment) {
  SaveTree(file);
  if (mTree.mHasViewPoints) mTree.SaveViewPathVec(file);
  SaveGlobalInfo(file, comment);
  for (const std::string& stream : {kHeavyData, kRyxTree, kLightData, kAttributes, kResources,
                                    kGlobalInformation, kViewPoints}) {
    file.AddBlockTransformation(stream, QovJbf::BlockFlag::kCompressed);
  }
  CheckSources();  // before the root index is written, because a file without one is not a model
  file.GetIndex().WriteAllBuffersToFileStream(file.GetStream());
  file.CloseFile();
}

void TreeSaver::SaveTree(QovJbf::JbFile& file) {
  Qov::Log::Trace(kSource) << "Saving ryx tree ...";
  // Creates the stream, because every record holds its length, which may be 0 to the end.
  file.GetIndex().GetWritingBlockIndex(kLightData);
  file.GetIndex().Put(kRyxTree, static_cast<std::int32_t>(mTree.mNodes.GetSize()));
  // The limit is computed once, because that reads several system files.
  const std::uint64_t limit = QovJbf::GetLoadLimit();
  for (const auto& [id, entry] : mTree.mNodes) {
    SaveRecord(file, entry);
    CheckLoadable(file, kTreeStreams, limit);
  }
  Qov::Log::Trace(kSource) << "Ryx tree saved.";
}

void TreeSaver::SaveGlobalInfo(QovJbf::JbFile& file, const std::string& comment) {
  Qov::Log::Trace(kSource) << "Saving global information ...";
  mTree.mCurrentModifier.mDate = FormatHistoryDate();
  mTree.mCurrentModifier.mFileVersion = mTree.mFileVersion;
  if (mTree.mCurrentModifier.mRecordMachine) {
    mTree.mCurrentModifier.mHost = GetHostName();
    mTree.mCurrentModifier.mUser = GetUserName();
  }
  mTree.mCurrentModifier.mComment = comment;
  mTree.mModifiers.push_back(mTree.mCurrentModifier);
  QovJbf::Index& index = file.GetIndex();
  index.Put(kGlobalInformation, static_cast<std::uint32_t>(mTree.mModifiers.size()));
  for (const ModifierInfo& modifier : mTree.mModifiers) index.Put(kGlobalInformation, modifier);
  CheckLoadable(file, kHistoryStreams, QovJbf::GetLoadLimit());
  file.AddBlockTransformation(kGlobalInformation, QovJbf::BlockFlag::kCompressed);
  Qov::Log::Trace(kSource) << "Global information saved.";
}

void SaveWith(HeavySaver& saver, Tree& tree, const std::string& path, const std::string& comment,
              const OutputSettings& settings) {
  CheckSettings(settings);
  const QovJbf::WriteSettings write{.mLevel = settings.mLevel,
                                    .mBlockLimit = settings.mBlockSize,
                                    .mUsualBlockLimit = ChooseBlockSize(tree.GetNodes()),
                                    .mThreads = settings.mThreads,
                                    .mCompressor = settings.mCompressor,
                                    .mStartsWriteback = true};
  CopySettings copies;
  if (settings.mKeepBlocks != BlockKeeping::Never) copies.mCopying = BlockCopying::IfWholeNeeded;
  copies.mCheck = settings.mKeepBlocks == BlockKeeping::Checked;
  TreeSaver(tree, write, copies, &saver).Save(path, true, comment);
}

}  // namespace QovRyx
