#include "check/Container.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <exception>

#include "Plural.h"
#include "Qov/Ryx/Progress.h"
#include "Qov/Util/Raise.h"
#include "check/BlockVerdict.h"
#include "container/ContainerFormat.h"
#include "container/LoadLimit.h"
#include "model/StreamNames.h"

// The section "Container" of docs/format.md describes a correct file.

namespace Qov::Tools {
namespace {

using QovJbf::IndexItem;
using QovJbf::kMagic;
using QovJbf::kRootLengthSize;
using QovJbf::kRootPosition;

/// Returns true if a root index of that length can follow the header, without regard to the magic.
bool LooksLikeRoot(std::uint32_t length, std::uint32_t count) {
  return count != 0 && length == QovJbf::GetItemListSize(count);
}

/// Bytes of the heavy stream that are kept after its blocks are checked, so that its arrays can be
/// checked without decompressing them again.
constexpr std::uint64_t kMostHeavyBytes = std::uint64_t{64} << 20;

/// Reads bytes that must be inside the file.
QovJbf::Block ReadPlain(FileBytes& file, std::uint64_t position, std::uint32_t size) {
  QovJbf::Block content;
  std::array<char, 65536> piece{};
  for (std::uint32_t left = size; left > 0;) {
    const auto part = static_cast<std::uint32_t>(std::min<std::size_t>(left, piece.size()));
    file.Read(position, piece.data(), part);
    content.Put(piece.data(), part);
    position += part;
    left -= part;
  }
  return content;
}

}  // namespace

Container::Container(const std::string& path, Findings& findings)
    : mFindings(findings), mPath(path), mBytes(path) {}

bool Container::ListBlocks(BlocksAhead& ahead) {
  if (!CheckHeader() || !ReadIndex()) return false;
  std::uint64_t position = mFirstBlock;
  for (const StoredBlock& block : mBlocks) {
    if (IsInflated(block, position)) ahead.Add(GetBlock(block, position));
    position += block.mSize;
  }
  ahead.Start();
  return true;
}

bool Container::OpenUnchecked() {
  if (!CheckHeader() || !OpenForReading()) return false;
  for (const IndexItem& item : mFile.GetIndex().GetItems()) {
    const auto number = static_cast<std::uint32_t>(mStreams.size());
    if (!mStreamsByName.try_emplace(item.mName, number).second) continue;
    Stream& stream = mStreams.emplace_back();
    stream.mName = item.mName;
    if (item.mName.empty() || QovJbf::IsReservedName(item.mName)) continue;
    stream.mLength = stream.mSound = mFile.OpenStreamReader(item.mName)->GetLength();
  }
  CheckStreamNames();
  return true;
}

bool Container::IsUnfinished(const std::string& path) {
  Findings findings(1);
  try {
    Container container(path, findings);
    if (container.CheckHeader()) container.ReadIndex();
  } catch (const std::exception&) {
    return false;  // not a container
  }
  const auto& found = findings.GetKept();
  return std::any_of(found.begin(), found.end(),
                     [](const Finding& finding) { return finding.mCode == "unfinished"; });
}

bool Container::CheckHeader() {
  std::array<unsigned char, kMagic.size()> magic{};
  const auto numMagic = std::min<std::uint64_t>(mBytes.GetLength(), magic.size());
  mBytes.Read(0, magic.data(), numMagic);
  const bool isMagic =
      numMagic > 0 && std::equal(magic.begin(), magic.begin() + numMagic, kMagic.begin());
  std::array<std::uint32_t, 2> root{};
  const bool hasRoot = mBytes.Holds(kRootPosition, sizeof root);
  if (hasRoot) mBytes.Read(kRootPosition, root.data(), sizeof root);
  if (!isMagic && !LooksLikeRoot(root[0], root[1])) {
    Util::Raise("tools/check/Container", Util::Exception::ErrorType::FormatNotSupported,
                mBytes.GetLength() == 0 ? "The file is empty" : "The file is not a ryx container");
  }
  if (!isMagic)
    mFindings.Error("magic", Place::InFile(0), "The file does not begin with the magic bytes.");
  if (mBytes.GetLength() >= QovJbf::kHeaderSize) CheckVersion();
  if (hasRoot && root[0] != 0 && root[1] != 0) return true;
  mFindings.Error("unfinished", Place::InFile(kRootPosition),
                  "The file is unfinished: it has no index, because its save was interrupted.");
  return false;
}

void Container::CheckVersion() {
  std::array<char, QovJbf::kVersionSize + 1> text{};
  mBytes.Read(QovJbf::kVersionPosition, text.data(), QovJbf::kVersionSize);
  mVersion = text.data();
  const Place place = Place::InFile(QovJbf::kVersionPosition);
  try {
    QovJbf::JbFile::CheckSupport(mVersion, mHasWideOffsets);
  } catch (const Util::Exception&) {
    mFindings.Error("version", place,
                    fmt::format("Version {} is newer than the newest known one, {}.",
                                Quoted(mVersion), QovJbf::kCurrentFileVersion));
    return;
  }
  const bool isNumber = mVersion.size() >= 3 && (mVersion[0] == '0' || mVersion[0] == '1') &&
                        mVersion[1] == '.' && mVersion[2] >= '0' && mVersion[2] <= '9';
  if (isNumber) return;
  mFindings.Warning("version", place, fmt::format("{} is not a version.", Quoted(mVersion)));
}

bool Container::ReadIndex() {
  if (!ReadRoot()) return false;
  const QovRyx::ProgressReport progress(mBytes.GetLength());
  std::uint64_t position = mFirstBlock;
  for (std::size_t k = 0; k < mBlocks.size(); ++k) {
    const bool isIndex = QovJbf::IsIndexBlockName(mStreams[mBlocks[k].mStream].mName);
    if (isIndex && !ReadIndexBlock(k, position)) return false;
    position += mBlocks[k].mSize;
    QovRyx::ProgressReport::Advance(mBlocks[k].mSize);
  }
  return true;
}

bool Container::ReadRoot() {
  const Place place = Place::InFile(kRootPosition);
  std::uint32_t length = 0;
  mBytes.Read(kRootPosition, &length, kRootLengthSize);
  const std::uint64_t begin = kRootPosition + kRootLengthSize;
  mFirstBlock = begin + length;
  if (mFirstBlock > mBytes.GetLength()) {
    mFindings.Error("index", place,
                    fmt::format("The root index has {} bytes, but the file ends after {}.", length,
                                mBytes.GetLength() - begin));
    return false;
  }
  QovJbf::Block items = ReadPlain(mBytes, begin, length);
  return AppendItems(items, place);
}

bool Container::ReadIndexBlock(std::size_t k, std::uint64_t position) {
  QovJbf::Block items;
  if (!TakeIndexBlock(k, position, items)) return false;
  if (std::all_of(items.GetData(), items.GetData() + items.GetSize(),
                  [](unsigned char byte) { return byte == 0; })) {
    mFindings.Error("unfinished", AtBlock(k, position),
                    "The file is unfinished: a block of the index is empty, because its save was "
                    "interrupted.");
    return false;
  }
  return AppendItems(items, AtBlock(k, position));
}

bool Container::TakeIndexBlock(std::size_t k, std::uint64_t position, QovJbf::Block& items) {
  const StoredBlock& block = mBlocks[k];
  std::string trouble;
  if (!mBytes.Holds(position, block.mSize)) {
    trouble = "A block of the index is after the end of the file.";
  } else if ((block.mFlags & QovJbf::BlockFlag::kCompressed) != 0) {
    trouble = InflateBlock(mBytes, position, block.mSize, &items).mTrouble;
  } else {
    items = ReadPlain(mBytes, position, block.mSize);
  }
  if (trouble.empty()) return true;
  mFindings.Error("index", AtBlock(k, position), trouble + " The blocks in it are lost.");
  return false;
}

/// Appends the items of a part of the index. Returns false if some cannot be read.
bool Container::AppendItems(QovJbf::Block& items, const Place& place) {
  items.SetPosition(0);
  std::uint32_t count = 0;
  std::uint32_t numTaken = 0;
  try {
    CopyFromBlock(items, count);
    // Refuses more items than the file has bytes, because compressed parts could list any number.
    for (; numTaken < count && mBlocks.size() <= mBytes.GetLength(); ++numTaken) {
      IndexItem item;
      CopyFromBlock(items, item);
      AppendItem(item);
    }
  } catch (const Util::Exception&) {
    // Missing items are reported below.
  }
  if (numTaken < count || count == 0) {
    mFindings.Error("index", place,
                    fmt::format("This part of the index lists {} blocks, but {} can be read.",
                                count, numTaken));
    return false;
  }
  if (items.GetRemaining() == 0) return true;
  mFindings.Warning("index", place,
                    Plural(items.GetRemaining(), "byte", "follow") +
                        " the last item of the index; readers ignore them.");
  return true;
}

void Container::AppendItem(const IndexItem& item) {
  CheckItem(item);
  const auto number = static_cast<std::uint32_t>(mStreams.size());
  const auto [stream, isNew] = mStreamsByName.try_emplace(item.mName, number);
  if (isNew) mStreams.emplace_back().mName = item.mName;
  mBlocks.push_back({stream->second, item.mSize, item.mFlags});
}

void Container::CheckItem(const IndexItem& item) {
  Place place = Place::InStream(item.mName);
  place.mBlock = mBlocks.size();
  if (QovJbf::IsEmptyBlockName(item.mName)) {
    if (item.mSize == 0) return;
    mFindings.Error("reserved-name", place,
                    fmt::format("A free slot has the size {}; it should be 0.", item.mSize));
  } else if (QovJbf::IsReservedName(item.mName) && !QovJbf::IsIndexBlockName(item.mName)) {
    mFindings.Warning("reserved-name", place, "Names that begin with \\x0B are reserved.");
  } else if (item.mName.empty()) {
    mFindings.Warning("reserved-name", place, "The stream of the block has no name.");
  }
  if ((item.mFlags & ~QovJbf::kKnownBlockFlags) == 0 && item.mFlags2 == 0) return;
  mFindings.Warning(
      "flags", place,
      fmt::format("The block has unknown flags: 0x{:02X}, 0x{:02X}.", item.mFlags, item.mFlags2));
}

Place Container::AtBlock(std::size_t k, std::uint64_t position) const {
  Place place = Place::InStream(mStreams[mBlocks[k].mStream].mName, position);
  place.mBlock = k;
  return place;
}

bool Container::CheckBlocks(BlocksAhead& ahead) {
  std::uint64_t position = mFirstBlock;
  for (std::size_t k = 0; k < mBlocks.size(); ++k) {
    CheckBlock(k, position, ahead);
    position += mBlocks[k].mSize;
  }
  CheckEnd(position);
  CheckStreamNames();
  return OpenForReading();
}

void Container::CheckStreamNames() {
  for (const Stream& stream : mStreams) {
    const bool isKnown =
        QovJbf::IsReservedName(stream.mName) || QovRyx::IsModelStream(stream.mName);
    if (stream.mName.empty() || isKnown) continue;
    mFindings.Warning("unknown-stream", Place::InStream(stream.mName),
                      "The stream is unknown; a merge leaves it out.");
  }
}

/// Returns true if the block is compressed and inside the file.
bool Container::IsInflated(const StoredBlock& block, std::uint64_t position) const {
  return block.mSize != 0 && (block.mFlags & QovJbf::BlockFlag::kCompressed) != 0 &&
         mBytes.Holds(position, block.mSize);
}

BlocksAhead::Block Container::GetBlock(const StoredBlock& block, std::uint64_t position) const {
  return {mBytes.GetFile(), position, block.mSize};
}

/// Decompresses a block, and keeps its content if it is of the heavy stream and fits.
BlockVerdict Container::Inflate(const StoredBlock& block, std::uint64_t position,
                                BlocksAhead& ahead) {
  std::optional<WholeBlock> whole = ahead.Take(GetBlock(block, position));
  if (!whole) return InflateBlock(mBytes, position, block.mSize);
  BlockVerdict verdict = whole->GetVerdict();
  if (mStreams[block.mStream].mName == QovRyx::kHeavyData &&
      mNumHeavyBytes + whole->mRawLength <= kMostHeavyBytes) {
    mNumHeavyBytes += whole->mRawLength;
    mHeavyContents.emplace(position, std::move(whole->mContent));
  } else {
    ahead.Return(std::move(*whole));
  }
  return verdict;
}

void Container::DropHeavyContents() {
  const auto buffers = QovJbf::GetBlockBuffers();
  for (auto& [position, content] : mHeavyContents) buffers->Return(std::move(content));
  mHeavyContents.clear();
}

void Container::CheckBlock(std::size_t k, std::uint64_t position, BlocksAhead& ahead) {
  const StoredBlock& block = mBlocks[k];
  Stream& stream = mStreams[block.mStream];
  if (block.mSize == 0) return;
  const bool isCompressed = (block.mFlags & QovJbf::BlockFlag::kCompressed) != 0;
  BlockVerdict verdict{isCompressed ? 0 : block.mSize, false, "", 0};
  const bool isInFile = mBytes.Holds(position, block.mSize);
  if (IsInflated(block, position)) verdict = Inflate(block, position, ahead);
  if (verdict.mNumTrailing != 0) {
    mFindings.Warning("block-rest", AtBlock(k, position),
                      Plural(verdict.mNumTrailing, "byte", "follow") + " the compressed data.");
  }
  stream.mLength += verdict.mRawLength;
  if (!isInFile) {
    Damage(stream, "block-outside", AtBlock(k, position),
           fmt::format("The block has {}, but the file ends at byte {}.",
                       Plural(block.mSize, "byte"), mBytes.GetLength()));
    stream.mIsRefused = true;
  } else if (!verdict.mTrouble.empty()) {
    Damage(stream, "block-damaged", AtBlock(k, position), verdict.mTrouble);
    stream.mIsRefused = stream.mIsRefused || verdict.mIsImpossible;
  }
  if (!stream.mIsDamaged) stream.mSound = stream.mLength;
}

void Container::Damage(Stream& stream, const std::string& code, const Place& place,
                       std::string text) {
  stream.mIsDamaged = true;
  mFindings.Error(code, place, std::move(text));
}

void Container::CheckEnd(std::uint64_t end) {
  if (end >= mBytes.GetLength()) return;
  mFindings.Warning("trailing-bytes", Place::InFile(end),
                    Plural(mBytes.GetLength() - end, "byte", "follow") + " the last block.");
}

/// Opens the file with the code that loads models.
bool Container::OpenForReading() {
  try {
    mFile.OpenFile(mPath, "rb");
    mFile.ReadIndex();
  } catch (const Util::Exception& error) {
    mFindings.Error("index", Place::InFile(kRootPosition),
                    fmt::format("The index cannot be read: {}.", error.GetLogMessage()));
    return false;
  }
  mBytes.GetIdentity().CheckUnchanged(mFile.GetStream());
  return true;
}

const Container::Stream* Container::FindStream(const std::string& name) const {
  const auto found = mStreamsByName.find(name);
  return found == mStreamsByName.end() ? nullptr : &mStreams[found->second];
}

/// Applies the limits of the code that loads models.
bool Container::ReportExpansion(std::initializer_list<std::string> streams) {
  std::uint64_t numBytes = 0;
  const Stream* longest = nullptr;
  for (const std::string& name : streams) {
    const Stream* stream = FindStream(name);
    if (stream == nullptr) continue;
    numBytes += stream->mLength;
    if (longest == nullptr || stream->mLength > longest->mLength) longest = stream;
  }
  const std::uint64_t limit = QovJbf::GetLoadLimit();
  if (numBytes <= limit) return false;
  const std::string content = streams.size() == 1 ? "Its bytes" : "It and the streams read with it";
  mFindings.Error("expansion", Place::InStream(longest->mName),
                  QovJbf::DescribeLoadLimit(content, numBytes, limit) + ".");
  return true;
}

StreamCursor Container::OpenStream(const std::string& name) {
  const Stream* stream = FindStream(name);
  if (stream == nullptr) return {name, nullptr, 0, 0};
  // The length of a refused stream is not known completely.
  if (stream->mIsRefused) return {name, nullptr, std::max<std::uint64_t>(stream->mLength, 1), 0};
  return {name, mFile.OpenStreamReader(name), stream->mLength, stream->mSound};
}

}  // namespace Qov::Tools
