#pragma once

#include <zlib.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "SourceFile.h"

namespace QovJbf {

/// Inflates one compressed block of a file step by step, forward only.
///
/// A stream that zlib refuses, or whose content has not exactly the length that was declared,
/// throws a DamagedBlock and leaves the inflater unusable.
class BlockInflater {
 public:
  /// The zlib stream lies in the `storedSize` bytes at `position` of `source`, which must live
  /// as long as this.
  BlockInflater(SourceFile& source, std::uint64_t position, std::uint32_t storedSize,
                std::uint32_t rawLength);
  ~BlockInflater();
  BlockInflater(const BlockInflater&) = delete;
  BlockInflater& operator=(const BlockInflater&) = delete;

  /// Where the next byte stands in the content.
  std::uint32_t GetOffset() const { return mOffset; }
  bool IsAtEnd() const { return mOffset == mRawLength; }

  /// The `n` bytes must be there. Reaching the end checks the stream's checksum.
  void Read(unsigned char* target, std::uint32_t n);
  void Skip(std::uint32_t n);
  /// Passes over the rest and checks the stream's checksum.
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
  bool mIsEnded = false;  // zlib has seen the end of the stream and its checksum
  std::array<unsigned char, kBufferSize> mBuffer;
};

}  // namespace QovJbf
