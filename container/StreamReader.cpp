#include "Qov/Jbf/StreamReader.h"

#include <algorithm>
#include <cstring>

#include "BlockInflater.h"
#include "FileAccess.h"
#include "InflatedBlocks.h"
#include "Qov/Util/Raise.h"
#include "RawLength.h"
#include "SourceFile.h"
#include "StreamReaderSource.h"

namespace QovJbf {

namespace {

/// Once so many times the length of a block was inflated in vain, because reading went back in it,
/// the block is kept as a whole.
constexpr std::uint64_t kMostInVain = 4;

}  // namespace

struct StreamReader::State {
  ~State() { InflatedBlocks::Instance().DropThoseOf(this); }

  std::uint32_t ReadRawLength(const StoredBlock& block) const;
  std::uint32_t GetRawLength(std::size_t i) const {
    return static_cast<std::uint32_t>(mStarts[i + 1] - mStarts[i]);
  }
  void ReadFromBlock(std::size_t i, std::uint32_t within, unsigned char* target, std::uint32_t n);
  void Inflate(std::size_t i, std::uint32_t within, unsigned char* target, std::uint32_t n);
  void Begin(std::size_t i);
  bool IsToBeKept(std::size_t i, std::uint32_t within);
  MallocBuffer InflateWhole(std::size_t i);
  void VerifyInflated();

  std::shared_ptr<SourceFile> mpSource;
  std::vector<StoredBlock> mBlocks;
  std::vector<std::uint64_t> mStarts;  // uncompressed offsets, and the length as one more
  std::size_t mInflated = 0;           // the block that mpInflater is in
  std::vector<bool> mVerified;         // blocks that were inflated to their end once
  std::vector<std::uint64_t> mInVain;  // bytes of each block that were only passed over
  std::uint64_t mAllInVain = 0;
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

void StreamReader::State::ReadFromBlock(std::size_t i, std::uint32_t within, unsigned char* target,
                                        std::uint32_t n) {
  if (!mBlocks[i].mCompressed) {
    mpSource->Read(mBlocks[i].mPosition + within, target, n);
    return;
  }
  try {
    Inflate(i, within, target, n);
  } catch (...) {
    mpInflater.reset();
    throw;
  }
}

void StreamReader::State::Inflate(std::size_t i, std::uint32_t within, unsigned char* target,
                                  std::uint32_t n) {
  if (InflatedBlocks::Instance().Read(this, i, within, target, n)) return;
  if (mInflated != i) VerifyInflated();
  if (!mpInflater || mInflated != i || mpInflater->GetOffset() > within) {
    if (IsToBeKept(i, within)) {
      MallocBuffer content = InflateWhole(i);
      std::memcpy(target, content.get() + within, n);
      InflatedBlocks::Instance().Add(this, i, std::move(content), GetRawLength(i));
      return;
    }
    Begin(i);
  }
  mpInflater->Skip(within - mpInflater->GetOffset());
  mpInflater->Read(target, n);
  if (!mpInflater->IsAtEnd()) return;
  mVerified[i] = true;
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
  return mInVain[i] > kMostInVain * GetRawLength(i) &&
         GetRawLength(i) <= InflatedBlocks::kMostBytes;
}

MallocBuffer StreamReader::State::InflateWhole(std::size_t i) {
  const std::uint32_t length = GetRawLength(i);
  MallocBuffer content = AllocateBuffer(kStreamReaderSource, length);
  Begin(i);
  mpInflater->Read(content.get(), length);
  mVerified[i] = true;
  mpInflater.reset();
  return content;
}

// What was read from a block is good only if its checksum is, which stands at its end. A block is
// left in the middle no more often than once without having been verified.
void StreamReader::State::VerifyInflated() {
  const std::unique_ptr<BlockInflater> left = std::move(mpInflater);
  if (!left || mVerified[mInflated]) return;
  left->SkipToEnd();
  mVerified[mInflated] = true;
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
  mpState->mVerified.resize(mpState->mBlocks.size());
  mpState->mInVain.resize(mpState->mBlocks.size());
}

StreamReader::~StreamReader() = default;

std::uint64_t StreamReader::GetLength() const { return mpState->mStarts.back(); }

void StreamReader::Read(std::uint64_t offset, void* target, std::size_t n) {
  if (n > GetLength() || offset > GetLength() - n) {
    Qov::Util::Raise(kStreamReaderSource, Qov::Util::Exception::ErrorType::OutOfBounds,
                     "Not enough bytes in the block");
  }
  const std::vector<std::uint64_t>& starts = mpState->mStarts;
  const auto after = std::upper_bound(starts.begin(), starts.end(), offset);
  auto* bytes = static_cast<unsigned char*>(target);
  for (auto i = static_cast<std::size_t>(after - starts.begin()) - 1; n > 0; ++i) {
    const auto part =
        static_cast<std::uint32_t>(std::min<std::uint64_t>(n, starts[i + 1] - offset));
    if (part > 0) {
      mpState->ReadFromBlock(i, static_cast<std::uint32_t>(offset - starts[i]), bytes, part);
    }
    bytes += part;
    offset += part;
    n -= part;
  }
}

std::uint64_t StreamReader::GetNumInVain() const { return mpState->mAllInVain; }

void StreamReader::Verify() { mpState->VerifyInflated(); }

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

bool StreamReader::ReadsFrom(const std::string& path) const {
  return mpState->mpSource->IsSameAs(path);
}

const std::string& StreamReader::GetPath() const { return mpState->mpSource->GetPath(); }

}  // namespace QovJbf
