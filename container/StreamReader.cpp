#include "Qov/Jbf/StreamReader.h"

#include <algorithm>
#include <cstring>

#include "BlockInflater.h"
#include "ContainerFormat.h"
#include "FileAccess.h"
#include "InflatedBlocks.h"
#include "Qov/Jbf/BlockZlibUnCompressor.h"
#include "Qov/Util/Raise.h"
#include "RawLength.h"
#include "SourceFile.h"
#include "Sources.h"

namespace QovJbf {

namespace {

/// Once so many times the length of a block was inflated in vain, because reading went back in it,
/// the block is kept as a whole.
constexpr std::uint64_t kMostInVain = 4;

}  // namespace

struct StreamReader::State {
  /// What is known of the checksum of a block.
  enum class Verdict : std::uint8_t { Unknown, Sound, Damaged };

  ~State() { InflatedBlocks::Instance().DropThoseOf(this); }

  std::uint32_t ReadRawLength(const StoredBlock& block) const;
  std::uint32_t GetRawLength(std::size_t i) const {
    return static_cast<std::uint32_t>(mStarts[i + 1] - mStarts[i]);
  }
  template <class ReadPart>
  void ForEachPart(std::uint64_t offset, void* target, std::size_t n, ReadPart readPart);
  void ReadFromBlock(std::size_t i, std::uint32_t within, unsigned char* target, std::uint32_t n);
  void Inflate(std::size_t i, std::uint32_t within, unsigned char* target, std::uint32_t n);
  void Begin(std::size_t i);
  bool IsToBeKept(std::size_t i, std::uint32_t within);
  bool KeepWhole(std::size_t i);
  void VerifyOwed();
  void VerifyBlock(std::size_t i, bool isWanted);
  template <class InflateToEnd>
  void Judge(std::size_t i, InflateToEnd inflateToEnd);

  std::shared_ptr<SourceFile> mpSource;
  std::vector<StoredBlock> mBlocks;
  std::vector<std::uint64_t> mStarts;  // uncompressed offsets, and the length as one more
  std::vector<Verdict> mVerdicts;
  std::size_t mNumVerifiedBefore = 0;  // the first blocks, which VerifyBefore need not visit
  std::optional<std::size_t> mOwed;    // read from, but not verified yet
  std::uint64_t mEndOfReads = 0;
  std::vector<std::uint64_t> mInVain;  // bytes of each block that were only passed over
  std::uint64_t mAllInVain = 0;
  std::size_t mInflated = 0;  // the block that mpInflater is in
  std::unique_ptr<BlockInflater> mpInflater;
};

std::uint32_t StreamReader::State::ReadRawLength(const StoredBlock& block) const {
  CheckInFile(kStreamReaderSource, mpSource->GetLength(), block.mPosition, block.mSize);
  if (!block.mCompressed) return block.mSize;
  std::uint32_t rawLength = 0;
  if (block.mSize >= kRawLengthSize) mpSource->Read(block.mPosition, &rawLength, kRawLengthSize);
  CheckRawLength(kStreamReaderSource, rawLength, block.mSize);
  return rawLength;
}

// Calls `readPart` for the part of each block that the bytes lie in.
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
  if (InflatedBlocks::Instance().Read(this, i, within, target, n)) return;
  try {
    Inflate(i, within, target, n);
  } catch (...) {
    mpInflater.reset();
    throw;
  }
}

void StreamReader::State::Inflate(std::size_t i, std::uint32_t within, unsigned char* target,
                                  std::uint32_t n) {
  if (!mpInflater || mInflated != i || mpInflater->GetOffset() > within) {
    if (IsToBeKept(i, within) && KeepWhole(i)) {
      InflatedBlocks::Instance().Read(this, i, within, target, n);
      return;
    }
    Begin(i);
  }
  mpInflater->Skip(within - mpInflater->GetOffset());
  mpInflater->Read(target, n);
  if (!mpInflater->IsAtEnd()) return;
  mVerdicts[i] = Verdict::Sound;
  mpInflater.reset();
}

void StreamReader::State::Begin(std::size_t i) {
  mpInflater.reset();
  const StoredBlock& block = mBlocks[i];
  mpInflater = std::make_unique<BlockInflater>(*mpSource, block.mPosition + kRawLengthSize,
                                               block.mSize - kRawLengthSize, GetRawLength(i));
  mInflated = i;
}

// Counts what it costs to begin block `i` again for what lies `within`.
bool StreamReader::State::IsToBeKept(std::size_t i, std::uint32_t within) {
  mInVain[i] += within;
  mAllInVain += within;
  return mInVain[i] > kMostInVain * GetRawLength(i);
}

// Runs the block through the inflater to its end, where the checksum is compared.
template <class InflateToEnd>
void StreamReader::State::Judge(std::size_t i, InflateToEnd inflateToEnd) {
  try {
    if (!mpInflater || mInflated != i) Begin(i);
    inflateToEnd();
    mVerdicts[i] = Verdict::Sound;
    mpInflater.reset();
  } catch (const DamagedBlock&) {
    mVerdicts[i] = Verdict::Damaged;
    mpInflater.reset();
    throw;
  } catch (...) {
    mpInflater.reset();
    throw;
  }
}

// Decompresses the block into the cache, which verifies it. Returns false, and has done nothing, if
// the cache or the memory is too small.
bool StreamReader::State::KeepWhole(std::size_t i) {
  const std::uint32_t length = GetRawLength(i);
  MallocBuffer content = InflatedBlocks::Instance().MakeRoom(length);
  if (!content) return false;
  mpInflater.reset();
  Judge(i, [&] { mpInflater->Read(content.get(), length); });
  InflatedBlocks::Instance().Add(this, i, std::move(content), length);
  return true;
}

// Verifies the block that Read was in last. It stays owed if that fails.
void StreamReader::State::VerifyOwed() {
  if (!mOwed) return;
  if (mVerdicts[*mOwed] != Verdict::Sound) Judge(*mOwed, [this] { mpInflater->SkipToEnd(); });
  mOwed.reset();
}

// With `isWanted` the content is kept in the cache if it fits.
void StreamReader::State::VerifyBlock(std::size_t i, bool isWanted) {
  if (!mBlocks[i].mCompressed || mVerdicts[i] == Verdict::Sound) return;
  if (mVerdicts[i] == Verdict::Damaged) throw DamagedBlock();
  if (isWanted && KeepWhole(i)) return;
  Judge(i, [this] { mpInflater->SkipToEnd(); });
}

StreamReader::StreamReader(std::shared_ptr<SourceFile> source, std::vector<StoredBlock> blocks)
    : mpState(std::make_unique<State>()) {
  mpState->mpSource = std::move(source);
  mpState->mBlocks = std::move(blocks);
  mpState->mStarts.reserve(mpState->mBlocks.size() + 1);
  mpState->mStarts.push_back(0);
  for (const StoredBlock& block : mpState->mBlocks) {
    mpState->mStarts.push_back(mpState->mStarts.back() + mpState->ReadRawLength(block));
  }
  mpState->mVerdicts.resize(mpState->mBlocks.size());
  mpState->mInVain.resize(mpState->mBlocks.size());
}

StreamReader::~StreamReader() = default;

std::uint64_t StreamReader::GetLength() const { return mpState->mStarts.back(); }

void StreamReader::Read(std::uint64_t offset, void* target, std::size_t n) {
  const auto readPart = [this](std::size_t i, std::uint32_t within, unsigned char* bytes,
                               std::uint32_t part) {
    State& state = *mpState;
    if (state.mOwed != i) state.VerifyOwed();
    state.ReadFromBlock(i, within, bytes, part);
    const bool isOwed = state.mBlocks[i].mCompressed && state.mVerdicts[i] != State::Verdict::Sound;
    state.mOwed = isOwed ? std::optional(i) : std::nullopt;
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

void StreamReader::Verify() { mpState->VerifyOwed(); }

std::uint64_t StreamReader::GetEndOfReads() const { return mpState->mEndOfReads; }

void StreamReader::VerifyBefore(std::uint64_t offset) {
  std::size_t& i = mpState->mNumVerifiedBefore;
  for (; i < mpState->mBlocks.size() && mpState->mStarts[i + 1] <= offset; ++i) {
    mpState->VerifyBlock(i, false);
  }
}

std::uint64_t StreamReader::GetNumDiscarded() const { return mpState->mAllInVain; }

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

bool StreamReader::ReadsFrom(const std::string& path) const { return GetIdentity().IsFileAt(path); }

const std::string& StreamReader::GetPath() const { return GetIdentity().GetPath(); }

const FileIdentity& StreamReader::GetIdentity() const { return mpState->mpSource->GetIdentity(); }

}  // namespace QovJbf
