#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "Qov/Export.h"
#include "Qov/Jbf/StreamReader.h"

namespace QovRyx {

/// The size in bytes of an element of an array.
inline constexpr std::uint64_t kElementSize = 4;

/// Reads the values of one array from the file that holds them, each time they are requested. All
/// loaders of a file share one StreamReader, whose comment describes the cost of reading.
class QOV_EXPORT DataLoader {
 public:
  /// `offset` is in uncompressed bytes of the stream, `count` in elements. `shuffledWidth` is the
  /// width that the stored bytes are shuffled by, or 0 if they are plain. Raises OutOfBounds if the
  /// array is not inside the stream.
  DataLoader(std::shared_ptr<QovJbf::StreamReader> reader, std::uint64_t offset,
             std::uint64_t count, std::uint8_t shuffledWidth);

  /// Returns the number of elements.
  std::uint64_t GetCount() const { return mCount; }
  QovJbf::StreamReader& GetReader() const { return *mpReader; }
  /// Returns the offset of the array in the stream, in uncompressed bytes.
  std::uint64_t GetOffset() const { return mOffset; }
  /// Returns the width that the stored bytes are shuffled by, or 0 if they are plain.
  std::uint8_t GetShuffledWidth() const { return mShuffledWidth; }

  /// Fills `values` with all elements, bits unchanged. T is std::uint32_t or float. Returns only
  /// after the checksums of all blocks that contain the array are verified; an uncompressed block
  /// has no checksum. Raises the errors of StreamReader::ReadVerified.
  template <class T>
  void LoadTo(std::vector<T>& values) const {
    Load(values, true);
  }
  /// Verifies that the array begins at its offset, by verifying all blocks of the stream before it
  /// (StreamReader::VerifyBefore). Costs nothing if these blocks were read before. Raises
  /// DamagedBlock.
  void VerifyPlace() const;

  /// Does the same as LoadTo without verifying. The output of a writer that uses it is valid only
  /// after GetReader().Verify() has returned. Raises the errors of StreamReader::Read.
  void LoadUnverified(std::vector<std::uint32_t>& values) const { Load(values, false); }
  /// Reads `n` of the kElementSize * GetCount() bytes of the array in their stored form, from byte
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
