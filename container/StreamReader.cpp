#include "Qov/Jbf/StreamReader.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <list>

#include "BlockCache.h"
#include "BlockInflater.h"
#include "ContainerFormat.h"
#include "FileAccess.h"
#include "Qov/Jbf/BlockZlibUnCompressor.h"
#include "Qov/Util/FileContext.h"
#include "Qov/Util/Raise.h"
#include "RawLength.h"
#include "ReadAhead.h"
#include "SourceFile.h"
#include "Sources.h"
#include "WholeBlock.h"

namespace QovJbf {

namespace {

/// A block is cached when this many times its length was decompressed and discarded, because
/// reading went back in it.
constexpr std::uint64_t kMaxDiscarded = 4;
/// The number of readers that may have an inflater. An inflater takes up to 72 KiB, and a merge
/// keeps one for each input whose block it has read in part.
constexpr std::size_t kMostInflaters = 8192;
/// Bytes that are copied at a time.
constexpr std::uint64_t kCopyPiece = std::uint64_t{1} << 20;

}  // namespace

struct StreamReader::State {
  /// Result of the comparison of a block with its checksum.
  enum class Checksum : std::uint8_t { Unknown, Matches, Differs };

  ~State() {
    CloseInflater();
    ReadAhead::Forget(*mpReader);
    BlockCache::Instance().DropAll(this);
  }

  std::uint32_t ReadRawLength(const StoredBlock& block) const;
  std::uint32_t GetRawLength(std::size_t i) const {
    return static_cast<std::uint32_t>(mStarts[i + 1] - mStarts[i]);
  }
  template <class ReadPart>
  void ForEachPart(std::uint64_t offset, void* target, std::size_t n, ReadPart readPart);
  void ReadFromBlock(std::size_t i, std::uint32_t within, unsigned char* target, std::uint32_t n);
  void Inflate(std::size_t i, std::uint32_t within, unsigned char* target, std::uint32_t n);
  void StartBlock(std::size_t i);
  void CloseInflater();
  void CountDiscarded(std::size_t i, std::uint32_t n);
  bool IsWorthCaching(std::size_t i) const;
  bool InflateWhole(std::size_t i, unsigned char* content);
  bool CacheBlock(std::size_t i);
  void VerifyLastRead();
  void VerifyBlock(std::size_t i, bool mayCache);
  template <class InflateToEnd>
  void RunToEnd(std::size_t i, InflateToEnd inflateToEnd);

  const StreamReader* mpReader = nullptr;
  std::shared_ptr<SourceFile> mpSource;
  std::vector<StoredBlock> mBlocks;
  std::vector<std::uint64_t> mStarts;  // uncompressed offsets of the blocks, and the length
  std::vector<Checksum> mChecksums;
  std::size_t mNumVerified = 0;          // number of blocks that VerifyBefore has verified
  std::optional<std::size_t> mLastRead;  // block that was read and is not verified yet
  std::uint64_t mEndOfReads = 0;
  std::vector<std::uint64_t> mDiscarded;  // bytes of each block, decompressed to reach later ones
  std::uint64_t mNumDiscarded = 0;
  std::size_t mInflating = 0;  // block that mpInflater decompresses
  std::unique_ptr<BlockInflater> mpInflater;

  /// The readers that have an inflater, in the order in which they started it. Used by one thread.
  static std::list<State*> sInflating;
  std::list<State*>::iterator mInPlace;  // the place of this reader there, if it has an inflater
};

std::list<StreamReader::State*> StreamReader::State::sInflating;

std::uint32_t StreamReader::State::ReadRawLength(const StoredBlock& block) const {
  CheckInFile(kStreamReaderSource, mpSource->GetLength(), block.mPosition, block.mSize);
  if (!block.mCompressed) return block.mSize;
  std::uint32_t rawLength = 0;
  if (block.mSize >= kRawLengthSize) mpSource->Read(block.mPosition, &rawLength, kRawLengthSize);
  CheckRawLength(kStreamReaderSource, rawLength, block.mSize);
  return rawLength;
}

// Calls `readPart` for the part in each block.
template <class ReadPart>
void StreamReader::State::ForEachPart(std::uint64_t offset, void* target, std::size_t n,
                                      ReadPart readPart) {
  if (n > mStarts.back() || offset > mStarts.back() - n) {
    Qov::Util::RaiseNotEnoughBytes(kStreamReaderSource);
  }
  const auto after = std::upper_bound(mStarts.begin(), mStarts.end(), offset);
  auto* bytes = static_cast<unsigned char*>(target);
  for (auto i = static_cast<std::size_t>(after - mStarts.begin()) - 1; n > 0; ++i) {
    const auto part =
        static_cast<std::uint32_t>(std::min<std::uint64_t>(n, mStarts[i + 1] - offset));
    if (part > 0) readPart(i, static_cast<std::uint32_t>(offset - mStarts[i]), bytes, part);
    bytes += part;
    offset += part;
    n -= part;
  }
}

void StreamReader::State::ReadFromBlock(std::size_t i, std::uint32_t within, unsigned char* target,
                                        std::uint32_t n) {
  if (!mBlocks[i].mCompressed) {
    mpSource->Read(mBlocks[i].mPosition + within, target, n);
    return;
  }
  if (ReadAhead::Read(*mpReader, i, within, target, n)) {
    mChecksums[i] = Checksum::Matches;
    return;
  }
  if (BlockCache::Instance().Read(this, i, within, target, n)) return;
  try {
    Inflate(i, within, target, n);
  } catch (...) {
    CloseInflater();
    throw;
  }
}

void StreamReader::State::Inflate(std::size_t i, std::uint32_t within, unsigned char* target,
                                  std::uint32_t n) {
  if (!mpInflater || mInflating != i || mpInflater->GetOffset() > within) {
    CountDiscarded(i, within);
    if (IsWorthCaching(i) && CacheBlock(i)) {
      BlockCache::Instance().Read(this, i, within, target, n);
      return;
    }
    StartBlock(i);
  }
  mpInflater->Skip(within - mpInflater->GetOffset());
  mpInflater->Read(target, n);
  if (!mpInflater->IsAtEnd()) return;
  mChecksums[i] = Checksum::Matches;
  CloseInflater();
}

/// Starts to decompress a block. Closes the inflater that was started first if there are too many;
/// its reader starts its block again when it needs it.
void StreamReader::State::StartBlock(std::size_t i) {
  CloseInflater();
  if (sInflating.size() == kMostInflaters) sInflating.front()->CloseInflater();
  std::list<State*> place(1, this);  // allocated before there is an inflater
  const StoredBlock& block = mBlocks[i];
  mpInflater = std::make_unique<BlockInflater>(*mpSource, block.mPosition + kRawLengthSize,
                                               block.mSize - kRawLengthSize, GetRawLength(i));
  mInflating = i;
  sInflating.splice(sInflating.end(), place);
  mInPlace = std::prev(sInflating.end());
}

void StreamReader::State::CloseInflater() {
  if (!mpInflater) return;
  mpInflater.reset();
  sInflating.erase(mInPlace);
}

void StreamReader::State::CountDiscarded(std::size_t i, std::uint32_t n) {
  mDiscarded[i] += n;
  mNumDiscarded += n;
}

bool StreamReader::State::IsWorthCaching(std::size_t i) const {
  return mDiscarded[i] > kMaxDiscarded * GetRawLength(i);
}

// Calls `inflateToEnd`, which decompresses the block to its end, where zlib compares the checksum.
template <class InflateToEnd>
void StreamReader::State::RunToEnd(std::size_t i, InflateToEnd inflateToEnd) {
  try {
    if (!mpInflater || mInflating != i) StartBlock(i);
    inflateToEnd();
    mChecksums[i] = Checksum::Matches;
    CloseInflater();
  } catch (const DamagedBlock&) {
    mChecksums[i] = Checksum::Differs;
    CloseInflater();
    throw;
  } catch (...) {
    CloseInflater();
    throw;
  }
}

// Decompresses a block as a whole. Returns false if it is damaged, or if it and its compressed form
// are too large to be in memory at the same time. BlockInflater decompresses it then.
bool StreamReader::State::InflateWhole(std::size_t i, unsigned char* content) {
  const StoredBlock& block = mBlocks[i];
  if (std::uint64_t{block.mSize} + GetRawLength(i) > kMostWhole) return false;
  const MallocBuffer stored = TryToAllocate(block.mSize);
  if (!stored) return false;
  mpSource->Read(block.mPosition, stored.get(), block.mSize);
  return DecompressWhole(stored.get() + kRawLengthSize, block.mSize - kRawLengthSize, content,
                         GetRawLength(i)) != 0;
}

// Decompresses the block into the cache, which verifies it. Returns false and does nothing if the
// cache or the memory is too small.
bool StreamReader::State::CacheBlock(std::size_t i) {
  const std::uint32_t length = GetRawLength(i);
  MallocBuffer content = BlockCache::Instance().MakeRoom(length);
  if (!content) return false;
  CloseInflater();
  if (InflateWhole(i, content.get())) {
    mChecksums[i] = Checksum::Matches;
  } else {
    RunToEnd(i, [&] { mpInflater->Read(content.get(), length); });
  }
  BlockCache::Instance().Add(this, i, std::move(content), length);
  return true;
}

// Verifies the block that Read has read last. After an error, the next call verifies it again.
void StreamReader::State::VerifyLastRead() {
  if (!mLastRead) return;
  if (mChecksums[*mLastRead] != Checksum::Matches)
    RunToEnd(*mLastRead, [this] { mpInflater->SkipToEnd(); });
  mLastRead.reset();
}

// Caches the content if `mayCache` is true and it fits.
void StreamReader::State::VerifyBlock(std::size_t i, bool mayCache) {
  if (!mBlocks[i].mCompressed || mChecksums[i] == Checksum::Matches) return;
  if (mChecksums[i] == Checksum::Differs) throw DamagedBlock();
  if (ReadAhead::IsSound(*mpReader, i)) {
    mChecksums[i] = Checksum::Matches;
    return;
  }
  if (mayCache && CacheBlock(i)) return;
  RunToEnd(i, [this] { mpInflater->SkipToEnd(); });
}

StreamReader::StreamReader(std::shared_ptr<SourceFile> source, std::vector<StoredBlock> blocks)
    : mpState(std::make_unique<State>()) {
  mpState->mpReader = this;
  mpState->mpSource = std::move(source);
  mpState->mBlocks = std::move(blocks);
  mpState->mStarts.reserve(mpState->mBlocks.size() + 1);
  mpState->mStarts.push_back(0);
  for (const StoredBlock& block : mpState->mBlocks) {
    mpState->mStarts.push_back(mpState->mStarts.back() + mpState->ReadRawLength(block));
  }
  mpState->mChecksums.resize(mpState->mBlocks.size());
  mpState->mDiscarded.resize(mpState->mBlocks.size());
}

StreamReader::~StreamReader() = default;

std::uint64_t StreamReader::GetLength() const { return mpState->mStarts.back(); }

void StreamReader::Read(std::uint64_t offset, void* target, std::size_t n) {
  const auto readPart = [this](std::size_t i, std::uint32_t within, unsigned char* bytes,
                               std::uint32_t part) {
    State& state = *mpState;
    if (state.mLastRead != i) state.VerifyLastRead();
    state.ReadFromBlock(i, within, bytes, part);
    const bool mustVerify =
        state.mBlocks[i].mCompressed && state.mChecksums[i] != State::Checksum::Matches;
    state.mLastRead = mustVerify ? std::optional(i) : std::nullopt;
  };
  mpState->ForEachPart(offset, target, n, readPart);
  mpState->mEndOfReads = std::max(mpState->mEndOfReads, offset + n);
}

void StreamReader::ReadVerified(std::uint64_t offset, void* target, std::size_t n) {
  const auto readPart = [this](std::size_t i, std::uint32_t within, unsigned char* bytes,
                               std::uint32_t part) {
    mpState->VerifyBlock(i, true);
    mpState->ReadFromBlock(i, within, bytes, part);
  };
  mpState->ForEachPart(offset, target, n, readPart);
}

void StreamReader::Verify() { mpState->VerifyLastRead(); }

std::uint64_t StreamReader::GetEndOfReads() const { return mpState->mEndOfReads; }

void StreamReader::VerifyBefore(std::uint64_t offset) {
  std::size_t& i = mpState->mNumVerified;
  for (; i < mpState->mBlocks.size() && mpState->mStarts[i + 1] <= offset; ++i) {
    mpState->VerifyBlock(i, false);
  }
}

std::uint64_t StreamReader::GetNumDiscarded() const { return mpState->mNumDiscarded; }

std::optional<StreamReader::BlockExtent> StreamReader::FindBlock(std::uint64_t offset,
                                                                 std::uint64_t n) const {
  const std::vector<std::uint64_t>& starts = mpState->mStarts;
  if (offset >= starts.back()) return std::nullopt;
  const auto after = std::upper_bound(starts.begin(), starts.end(), offset);
  if (n > *after - offset) return std::nullopt;
  const auto i = static_cast<std::size_t>(after - starts.begin()) - 1;
  const StoredBlock& block = mpState->mBlocks[i];
  return BlockExtent{i,           starts[i],         static_cast<std::uint32_t>(*after - starts[i]),
                     block.mSize, block.mCompressed, i + 1 == mpState->mBlocks.size()};
}

void StreamReader::ReadStored(const BlockExtent& block, std::uint64_t begin, void* target,
                              std::size_t n) {
  CheckInFile(kStreamReaderSource, block.mStoredSize, begin, n);
  mpState->mpSource->Read(mpState->mBlocks[block.mBlock].mPosition + begin, target, n);
  const bool hasLength = block.mCompressed && begin == 0 && n >= kRawLengthSize;
  if (hasLength && std::memcmp(target, &block.mRawLength, kRawLengthSize) != 0) {
    Qov::Util::Raise(kStreamReaderSource, Qov::Util::Exception::ErrorType::MismatchError);
  }
}

void StreamReader::CopyStored(const BlockExtent& block, std::FILE* target, std::uint64_t position) {
  std::uint64_t done = std::min<std::uint64_t>(block.mStoredSize, kRawLengthSize);
  const MallocBuffer piece = AllocateBuffer(kStreamReaderSource, kCopyPiece);
  const auto copyPiece = [&](std::uint64_t begin, std::uint64_t n) {
    Qov::Util::WithFileContext(GetPath(), [&] { ReadStored(block, begin, piece.get(), n); });
    WriteAt(kIndexSource, target, position + begin, piece.get(), n);
  };
  copyPiece(0, done);  // compares the length of the content
  if (std::fflush(target) == 0) {
    const Descriptor source = mpState->mpSource->DuplicateHandle();
    if (source.IsOpen()) {
      done += CopyInFileSystem(source.Get(), GetPosition(block) + done, ::fileno(target),
                               position + done, block.mStoredSize - done);
    }
  }
  for (; done < block.mStoredSize; done += std::min(kCopyPiece, block.mStoredSize - done)) {
    copyPiece(done, std::min(kCopyPiece, block.mStoredSize - done));
  }
}

std::uint64_t StreamReader::GetPosition(const BlockExtent& block) const {
  return mpState->mBlocks[block.mBlock].mPosition;
}

int StreamReader::OpenDescriptor() const {
  const int descriptor = mpState->mpSource->DuplicateHandle().Release();
  if (descriptor == -1) Qov::Util::RaiseReadError(kStreamReaderSource);
  return descriptor;
}

void StreamReader::SetVerified(const BlockExtent& block) {
  mpState->mChecksums[block.mBlock] = State::Checksum::Matches;
  mpState->mEndOfReads = std::max(mpState->mEndOfReads, block.mStart + block.mRawLength);
}

bool StreamReader::ReadsFrom(const std::string& path) const { return GetIdentity().IsFileAt(path); }

const std::string& StreamReader::GetPath() const { return GetIdentity().GetPath(); }

const FileIdentity& StreamReader::GetIdentity() const { return mpState->mpSource->GetIdentity(); }

}  // namespace QovJbf
