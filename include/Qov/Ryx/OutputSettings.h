#pragma once

#include <cstdint>

#include "Qov/Export.h"
#include "Qov/Jbf/Compressor.h"

namespace QovRyx {

/// Tells if compressed blocks of the inputs are copied to the output. That is much faster than
/// compressing their arrays. Only blocks are copied of which the output needs all content. They
/// keep their level and their size.
enum class BlockKeeping : std::uint8_t {
  Never,
  /// Copied blocks are decompressed to compare them with their lengths and checksums. A damaged
  /// block raises the same error as reading its arrays.
  Checked,
  /// Copied blocks are not decompressed. Damage in an input gets into the output.
  Unchecked
};

/// Settings for writing a model file. The bytes of the file do not depend on the number of threads.
struct OutputSettings {
  /// Replaces an existing file. Otherwise an existing file raises ElementExists.
  bool mOverwrite = false;
  /// Compression level, from 1 (fast) to 9 (small).
  int mLevel = 6;
  /// The default is the fast one. Choose Compressor::Zlib if the bytes of the file must not depend
  /// on the version of libdeflate or on whether the library was built with it.
  QovJbf::Compressor mCompressor = QovJbf::Compressor::Fastest;
  /// Uncompressed bytes of a full block, at least 1024; 0 for the default: the value of the
  /// environment variable TELMORAX_MAX_RYX_BLOCK_SIZE, else a 32nd of the arrays in whole MiB, from
  /// 1 to 8. A thread compresses one block at a time, so small blocks occupy all threads.
  std::uint32_t mBlockSize = 0;
  /// Threads that compress, from 1 to 256. With 1, the calling thread compresses. 0 for the
  /// default: the value of the environment variable RYXMERGE_THREADS, else as many as the
  /// processors and the free memory allow.
  unsigned mThreads = 0;
  BlockKeeping mKeepBlocks = BlockKeeping::Never;
};

/// Raises OutOfBounds, with a description that names the setting and its range, if a value is not
/// possible.
QOV_EXPORT void CheckSettings(const OutputSettings& settings);

}  // namespace QovRyx
