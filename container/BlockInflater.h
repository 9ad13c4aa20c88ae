#pragma once

#include <zlib.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "SourceFile.h"

namespace QovJbf {

/// Decompresses one block of a file step by step, forward only.
///
/// Throws DamagedBlock if zlib refuses the stream, or if the length of the content is not the
/// stored length. The object cannot be used after that.
class BlockInflater {
 public:
  /// The zlib stream has `storedSize` bytes at `position` of `source`, which must outlive this
  /// object.
  BlockInflater(SourceFile& source, std::uint64_t position, std::uint32_t storedSize,
                std::uint32_t rawLength);
  ~BlockInflater();
  BlockInflater(const BlockInflater&) = delete;
  BlockInflater& operator=(const BlockInflater&) = delete;

  /// Returns the offset of the next byte in the content.
  std::uint32_t GetOffset() const { return mOffset; }
  bool IsAtEnd() const { return mOffset == mRawLength; }

  /// Reads the next `n` bytes. The content must have that many more. Compares the checksum at the
  /// end of the content.
  void Read(unsigned char* target, std::uint32_t n);
  void Skip(std::uint32_t n);
  /// Skips the rest and compares the checksum.
  void SkipToEnd();

 private:
  static constexpr std::size_t kBufferSize = 32768;

  void Inflate(unsigned char* target, std::uint32_t n);
  void Step();
  void Finish();

  SourceFile& mSource;
  std::uint64_t mPosition;
  std::uint32_t mStoredLeft;
  std::uint32_t mRawLength;
  std::uint32_t mOffset = 0;
  z_stream mStream{};
  bool mIsEnded = false;  // zlib has reached the end of the stream and compared the checksum
  std::array<unsigned char, kBufferSize> mBuffer;
};

}  // namespace QovJbf
