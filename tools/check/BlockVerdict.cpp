#include "check/BlockVerdict.h"

#include <fmt/format.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <bit>
#include <memory>
#include <new>
#include <utility>

#include "Plural.h"
#include "Qov/Util/Raise.h"
#include "container/ContainerFormat.h"
#include "container/WholeBlock.h"

namespace Qov::Tools {
namespace {

constexpr const char* kSource = "tools/check/BlockVerdict";

/// Raises MemoryAllocationError if zlib had no memory, because that is not a fault of the file.
void RaiseIfMemoryIsShort(int result) {
  if (result == Z_MEM_ERROR) Util::RaiseOutOfMemory(kSource);
}

class Inflation {
 public:
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): the buffers are filled, then read
  Inflation(FileBytes& file, std::uint64_t position, std::uint32_t size)
      : mFile(file), mPosition(position), mLeft(size) {
    RaiseIfMemoryIsShort(inflateInit(&mStream));
  }
  ~Inflation() { inflateEnd(&mStream); }
  Inflation(const Inflation&) = delete;
  Inflation& operator=(const Inflation&) = delete;

  /// Returns the reason why the stream is damaged, or an empty string. Stops after more than
  /// `limit` bytes of content.
  std::string Run(std::uint64_t limit, QovJbf::Block* content);
  std::uint64_t GetNumMade() const { return mStream.total_out; }
  std::uint32_t GetNumUnread() const { return mLeft + mStream.avail_in; }

 private:
  void Refill();
  std::string Describe(int result) const;

  FileBytes& mFile;
  std::uint64_t mPosition;
  std::uint32_t mLeft;
  z_stream mStream{};
  std::array<unsigned char, 65536> mInput;
  std::array<unsigned char, 65536> mOutput;
};

void Inflation::Refill() {
  const auto part = static_cast<std::uint32_t>(std::min<std::size_t>(mLeft, mInput.size()));
  mFile.Read(mPosition, mInput.data(), part);
  mPosition += part;
  mLeft -= part;
  mStream.next_in = mInput.data();
  mStream.avail_in = part;
}

std::string Inflation::Describe(int result) const {
  const std::string reason = mStream.msg == nullptr ? fmt::format("error {}", result) : mStream.msg;
  return fmt::format("The block cannot be decompressed after byte {} of its content: {}.",
                     mStream.total_out, reason);
}

std::string Inflation::Run(std::uint64_t limit, QovJbf::Block* content) {
  int result = Z_OK;
  while (result != Z_STREAM_END && mStream.total_out <= limit) {
    if (mStream.avail_in == 0) Refill();
    mStream.next_out = mOutput.data();
    mStream.avail_out = static_cast<unsigned>(mOutput.size());
    result = inflate(&mStream, Z_NO_FLUSH);
    RaiseIfMemoryIsShort(result);
    const auto made = static_cast<std::uint32_t>(mOutput.size() - mStream.avail_out);
    if (content != nullptr) content->Put(mOutput.data(), made);
    if (result == Z_BUF_ERROR && mLeft + mStream.avail_in == 0) {
      return fmt::format("The block ends before its compressed data, after byte {} of its content.",
                         mStream.total_out);
    }
    if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR) return Describe(result);
  }
  return "";
}

}  // namespace

std::optional<std::uint32_t> ReadWholeLength(const QovJbf::Descriptor& file, std::uint64_t position,
                                             std::uint32_t size) {
  if (size < QovJbf::kRawLengthSize) return std::nullopt;
  std::array<unsigned char, QovJbf::kRawLengthSize> bytes{};
  if (!QovJbf::ReadFully(file, position, bytes.data(), bytes.size())) return std::nullopt;
  const auto length = std::bit_cast<std::uint32_t>(bytes);
  const auto numStored = static_cast<std::uint32_t>(size - QovJbf::kRawLengthSize);
  if (length > QovJbf::GetLargestContent(numStored) ||
      std::uint64_t{size} + length > QovJbf::kMostWhole) {
    return std::nullopt;
  }
  return length;
}

std::optional<WholeBlock> InflateWholeBlock(const QovJbf::Descriptor& file, std::uint64_t position,
                                            std::uint32_t size, QovJbf::ChunkPool& buffers) {
  const auto length = ReadWholeLength(file, position, size);
  if (!length) return std::nullopt;
  const auto numStored = static_cast<std::uint32_t>(size - QovJbf::kRawLengthSize);
  QovJbf::Chunk content;
  QovJbf::Chunk stored;
  std::size_t numUsed = 0;
  try {
    content = buffers.TakeForBlock(*length);
    stored = buffers.TakeForBlock(numStored);
    unsigned char* stream = stored.mData.get();
    if (QovJbf::ReadFully(file, position + QovJbf::kRawLengthSize, stream, numStored)) {
      numUsed = QovJbf::DecompressWhole(stream, numStored, content.mData.get(), *length);
    }
  } catch (const std::bad_alloc&) {
    // The block is decompressed piece by piece.
  }
  buffers.Return(std::move(stored));
  if (numUsed == 0) {
    buffers.Return(std::move(content));
    return std::nullopt;
  }
  content.mSize = *length;
  return WholeBlock{*length, static_cast<std::uint32_t>(numStored - numUsed), std::move(content)};
}

BlockVerdict InflateBlock(FileBytes& file, std::uint64_t position, std::uint32_t size,
                          QovJbf::Block* content) {
  BlockVerdict verdict;
  if (size < QovJbf::kRawLengthSize) {
    verdict.mIsImpossible = true;
    verdict.mTrouble =
        fmt::format("The block is compressed but has only {}.", Plural(size, "byte"));
    return verdict;
  }
  file.Read(position, &verdict.mRawLength, QovJbf::kRawLengthSize);
  const auto stored = static_cast<std::uint32_t>(size - QovJbf::kRawLengthSize);
  if (verdict.mRawLength > QovJbf::GetLargestContent(stored)) {
    verdict.mIsImpossible = true;
    verdict.mTrouble = fmt::format("The block should decompress to {}, more than {} can contain.",
                                   Plural(verdict.mRawLength, "byte"), Plural(stored, "byte"));
    return verdict;
  }
  const auto inflation =
      std::make_unique<Inflation>(file, position + QovJbf::kRawLengthSize, stored);
  verdict.mTrouble = inflation->Run(verdict.mRawLength, content);
  const std::uint64_t made = inflation->GetNumMade();
  if (verdict.mTrouble.empty() && made != verdict.mRawLength) {
    const std::string truth = made > verdict.mRawLength ? "more" : std::to_string(made);
    verdict.mTrouble = fmt::format("The block should decompress to {}, but its content has {}.",
                                   Plural(verdict.mRawLength, "byte"), truth);
  }
  verdict.mNumTrailing = verdict.mTrouble.empty() ? inflation->GetNumUnread() : 0;
  return verdict;
}

}  // namespace Qov::Tools
