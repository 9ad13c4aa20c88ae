#include "BlockChecks.h"

#include <zlib.h>

#include <algorithm>
#include <new>
#include <optional>
#include <utility>

#include "ContainerFormat.h"
#include "Descriptor.h"
#include "Qov/Util/FileContext.h"
#include "Qov/Util/Raise.h"
#include "RawLength.h"
#include "SourceFile.h"
#include "Sources.h"
#include "WholeBlock.h"

namespace QovJbf {
namespace {

constexpr std::size_t kCheckPiece = std::size_t{256} << 10;

/// A zlib stream that is decompressed piece by piece. The content is not kept.
class Inflation {
 public:
  Inflation() : mResult(inflateInit(&mStream)) {}
  ~Inflation() { inflateEnd(&mStream); }
  Inflation(const Inflation&) = delete;
  Inflation& operator=(const Inflation&) = delete;

  /// Decompresses the next piece as far as the content has at most `most` bytes. Returns false at
  /// the end of the stream and after an error.
  bool Add(unsigned char* bytes, std::size_t n, std::uint32_t most) {
    mStream.next_in = bytes;
    mStream.avail_in = static_cast<uInt>(n);
    do {
      if (mResult != Z_OK) return false;
      mStream.next_out = mContent.data();
      mStream.avail_out = static_cast<uInt>(mContent.size());
      mResult = inflate(&mStream, Z_NO_FLUSH);
      if (mResult == Z_BUF_ERROR) mResult = Z_OK;  // more input is needed
      if (mResult == Z_NEED_DICT) mResult = Z_DATA_ERROR;
      if (mStream.total_out > most) mResult = Z_BUF_ERROR;
    } while (mStream.avail_in > 0 || mStream.avail_out == 0);
    return mResult == Z_OK;
  }
  /// Returns Z_OK, or the code of the error, if the content ought to have `length` bytes.
  int GetResult(std::uint32_t length) const {
    if (mResult != Z_STREAM_END) return mResult == Z_OK ? Z_DATA_ERROR : mResult;
    return mStream.total_out == length ? Z_OK : Z_DATA_ERROR;
  }

 private:
  z_stream mStream{};
  int mResult;
  std::vector<unsigned char> mContent = std::vector<unsigned char>(kCheckPiece);
};

}  // namespace

struct BlockChecks::Check {
  StreamReader* mpReader;
  StreamReader::BlockExtent mBlock;
  Descriptor mFile;
  std::uint64_t mPosition;      ///< Of the zlib stream in the file.
  std::uint32_t mStreamLength;  ///< With the bytes after the stream, if there are any.
  std::optional<int> mResult;   ///< The result of zlib, or Z_ERRNO if the file cannot be read.
};

BlockChecks::BlockChecks(unsigned threads)
    : mMostPending(std::clamp<std::size_t>(std::size_t{2} * threads, 1, CountWorkerHandles())),
      mWorkers(threads) {
  mFree.reserve(threads);
}

BlockChecks::~BlockChecks() { mIsEnding = true; }

void BlockChecks::Add(StreamReader& reader, const StreamReader::BlockExtent& block) {
  if (mPending.size() == mMostPending) FinishFirst();
  const std::uint64_t position = reader.GetPosition(block) + kRawLengthSize;
  int file = -1;
  Qov::Util::WithFileContext(reader.GetPath(), [&] { file = reader.OpenDescriptor(); });
  const auto check = std::make_shared<Check>(
      Check{&reader, block, Descriptor(file), position,
            static_cast<std::uint32_t>(block.mStoredSize - kRawLengthSize), std::nullopt});
  mPending.push_back(check);
  mWorkers.Post([this, check] { Run(*check); });
}

void BlockChecks::Finish() {
  while (!mPending.empty()) FinishFirst();
}

void BlockChecks::FinishFirst() {
  const std::shared_ptr<Check> check = mPending.front();
  {
    std::unique_lock lock(mMutex);
    mDone.wait(lock, [&check] { return check->mResult.has_value(); });
  }
  mPending.pop_front();
  Qov::Util::WithFileContext(check->mpReader->GetPath(), [&check] {
    if (check->mResult == Z_ERRNO) Qov::Util::RaiseReadError(kStreamReaderSource);
    if (check->mResult != Z_OK) ThrowInflateError(kStreamReaderSource, *check->mResult);
    check->mpReader->SetVerified(check->mBlock);
  });
}

// The functions below run on the threads of the WorkerPool.

void BlockChecks::Run(Check& check) {
  int result = Z_OK;
  try {
    if (!MatchesAtOnce(check)) result = InflatePiecewise(check);
  } catch (const std::bad_alloc&) {
    result = Z_MEM_ERROR;
  }
  { const Descriptor closed = std::move(check.mFile); }
  const std::lock_guard lock(mMutex);
  check.mResult = result;
  mDone.notify_all();
}

/// Returns false if the block is damaged, cannot be read or is too large for the memory.
bool BlockChecks::MatchesAtOnce(const Check& check) {
  const std::uint64_t length = check.mBlock.mRawLength;
  Buffer buffer = TakeBuffer(check.mStreamLength + length);
  if (!buffer.mData) return false;
  unsigned char* stream = buffer.mData.get();
  const bool matches =
      ReadFully(check.mFile, check.mPosition, stream, check.mStreamLength) &&
      DecompressWhole(stream, check.mStreamLength, stream + check.mStreamLength, length) != 0;
  ReturnBuffer(std::move(buffer));
  return matches;
}

/// Returns Z_OK or the code of the error.
int BlockChecks::InflatePiecewise(const Check& check) {
  std::vector<unsigned char> piece(kCheckPiece);
  Inflation inflation;
  for (std::uint32_t done = 0; done < check.mStreamLength;) {
    const auto n =
        static_cast<std::uint32_t>(std::min<std::size_t>(kCheckPiece, check.mStreamLength - done));
    if (!ReadFully(check.mFile, check.mPosition + done, piece.data(), n)) return Z_ERRNO;
    done += n;
    if (mIsEnding || !inflation.Add(piece.data(), n, check.mBlock.mRawLength)) break;
  }
  return inflation.GetResult(check.mBlock.mRawLength);
}

/// Returns an empty buffer if there is no memory.
BlockChecks::Buffer BlockChecks::TakeBuffer(std::uint64_t size) {
  const std::lock_guard lock(mMutex);
  const auto fits = std::find_if(mFree.begin(), mFree.end(),
                                 [size](const Buffer& free) { return free.mCapacity >= size; });
  if (fits != mFree.end()) {
    Buffer buffer = std::move(*fits);
    mFree.erase(fits);
    return buffer;
  }
  for (const Buffer& free : mFree) mMemory -= free.mCapacity;
  mFree.clear();
  if (mMemory + size > kMostMemory) return {};
  Buffer buffer{MallocBuffer(static_cast<unsigned char*>(std::malloc(size))), size};
  if (!buffer.mData) return {};
  mMemory += size;
  return buffer;
}

void BlockChecks::ReturnBuffer(Buffer buffer) {
  const std::lock_guard lock(mMutex);
  mFree.push_back(std::move(buffer));  // there are at most as many buffers as threads
}

}  // namespace QovJbf
