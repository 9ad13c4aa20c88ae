#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "Qov/Export.h"
#include "Qov/Jbf/StreamReader.h"

namespace QovRyx {

/// The size in bytes of an element of an array.
inline constexpr std::uint64_t kElementSize = 4;

/// Delivers the values of one array from the file that holds them, each time it is asked.
///
/// All loaders of a file share one StreamReader, whose comment describes the cost of reading.
/// Elements are 4 bytes wide.
class QOV_EXPORT DataLoader {
 public:
  /// `offset` counts uncompressed bytes; `shuffledWidth` is the width that the stored bytes are
  /// shuffled by, 0 if they are plain. Raises OutOfBounds if the array does not lie inside the
  /// stream.
  DataLoader(std::shared_ptr<QovJbf::StreamReader> reader, std::uint64_t offset,
             std::uint64_t count, std::uint8_t shuffledWidth);

  /// Number of elements.
  std::uint64_t GetCount() const { return mCount; }
  QovJbf::StreamReader& GetReader() const { return *mpReader; }
  /// Where the array begins in the reader's uncompressed stream.
  std::uint64_t GetOffset() const { return mOffset; }
  /// The width that the stored bytes are shuffled by, 0 if they are plain.
  std::uint8_t GetShuffledWidth() const { return mShuffledWidth; }

  /// Fills `values` with all elements, bits unchanged. Returns only after the checksums of all
  /// blocks that contain the array are verified; an uncompressed block has no checksum. Raises the
  /// errors of StreamReader::ReadVerified.
  void LoadTo(std::vector<std::uint32_t>& values) const { Load(values, true); }
  void LoadTo(std::vector<float>& values) const { Load(values, true); }
  /// Verifies that the array begins at its offset, by verifying all blocks of the stream before it
  /// (StreamReader::VerifyBefore). Costs nothing if those blocks were already read. Raises
  /// DamagedBlock.
  void VerifyPlace() const;

  /// Does the same as LoadTo without verifying. For writers, whose output is valid only after
  /// GetReader().Verify() has returned. Raises the errors of StreamReader::Read.
  void LoadUnverified(std::vector<std::uint32_t>& values) const { Load(values, false); }
  /// Reads `n` of the 4 * GetCount() bytes of the array in their stored form, beginning at byte
  /// `begin`, without verifying.
  void ReadStored(std::uint64_t begin, void* target, std::size_t n) const;

 private:
  template <class T>
  void Load(std::vector<T>& values, bool verified) const;

  std::shared_ptr<QovJbf::StreamReader> mpReader;
  std::uint64_t mOffset;
  std::uint64_t mCount;
  std::uint8_t mShuffledWidth;
};

}  // namespace QovRyx
