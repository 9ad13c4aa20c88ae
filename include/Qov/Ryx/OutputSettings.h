#pragma once

#include <cstdint>

namespace QovRyx {

/// How a model file is written. The bytes of the file do not depend on the number of threads.
struct OutputSettings {
  /// Replaces an existing file. Otherwise an existing file raises ElementExists.
  bool mOverwrite = false;
  /// Compression level of zlib, from 1 (fast) to 9 (small).
  int mLevel = 6;
  /// Uncompressed bytes of a full block; 0 for the default.
  std::uint32_t mBlockSize = 0;
  /// Threads that compress, beside the calling one; 0 for one per processor.
  unsigned mThreads = 0;
  /// Copies compressed blocks of the inputs if all their arrays are wanted.
  bool mKeepBlocks = false;
};

}  // namespace QovRyx
