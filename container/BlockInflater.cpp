#include "BlockInflater.h"

#include <algorithm>

#include "Qov/Util/Raise.h"
#include "RawLength.h"
#include "Sources.h"

namespace QovJbf {

// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): the buffer is filled before it is read
BlockInflater::BlockInflater(SourceFile& source, std::uint64_t position, std::uint32_t storedSize,
                             std::uint32_t rawLength)
    : mSource(source), mPosition(position), mStoredLeft(storedSize), mRawLength(rawLength) {
  if (inflateInit(&mStream) != Z_OK) {
    Qov::Util::RaiseOutOfMemory(kStreamReaderSource);
  }
}

BlockInflater::~BlockInflater() { inflateEnd(&mStream); }

void BlockInflater::Read(unsigned char* target, std::uint32_t n) {
  Inflate(target, n);
  if (IsAtEnd()) Finish();
}

void BlockInflater::Skip(std::uint32_t n) {
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): it is never read
  std::array<unsigned char, 8192> passed;
  while (n > 0) {
    const std::uint32_t part = std::min<std::uint32_t>(n, passed.size());
    Inflate(passed.data(), part);
    n -= part;
  }
}

void BlockInflater::SkipToEnd() {
  Skip(mRawLength - mOffset);
  Finish();
}

void BlockInflater::Inflate(unsigned char* target, std::uint32_t n) {
  mStream.next_out = target;
  mStream.avail_out = n;
  while (mStream.avail_out > 0) {
    if (mIsEnded) ThrowDamagedBlock(Z_DATA_ERROR);  // the content is shorter than its stored length
    Step();
  }
  mOffset += n;
}

// Calls inflate once. Reads more input if there is none left.
void BlockInflater::Step() {
  if (mStream.avail_in == 0) {
    const std::uint32_t part = std::min<std::uint32_t>(mStoredLeft, kBufferSize);
    if (part == 0) ThrowDamagedBlock(Z_DATA_ERROR);
    mSource.Read(mPosition, mBuffer.data(), part);
    mPosition += part;
    mStoredLeft -= part;
    mStream.next_in = mBuffer.data();
    mStream.avail_in = part;
  }
  const int result = inflate(&mStream, Z_NO_FLUSH);
  if (result == Z_NEED_DICT) ThrowDamagedBlock(Z_DATA_ERROR);
  if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR) {
    ThrowInflateError(kStreamReaderSource, result);
  }
  mIsEnded = result == Z_STREAM_END;
}

// Continues to the end of the stream, where zlib compares the checksum.
void BlockInflater::Finish() {
  unsigned char excess = 0;
  mStream.next_out = &excess;
  mStream.avail_out = 1;
  while (!mIsEnded && mStream.avail_out > 0) Step();
  if (mStream.total_out != mRawLength) ThrowDamagedBlock(Z_BUF_ERROR);
}

}  // namespace QovJbf
