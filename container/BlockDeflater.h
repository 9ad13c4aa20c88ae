#pragma once

#include <zlib.h>

#include <cstddef>
#include <vector>

#include "ChunkPool.h"

namespace QovJbf {

/// Compresses one block piece by piece. The zlib stream that comes out is byte for byte the one
/// that BlockZlibCompressor makes of the whole block, as long as all pieces but the last are
/// ChunkPool::kChunkSize long.
///
/// Runs on worker threads: errors, of memory or of zlib, are a std::bad_alloc and are not logged.
class BlockDeflater {
 public:
  BlockDeflater(ChunkPool& pool, int level);
  ~BlockDeflater();
  BlockDeflater(const BlockDeflater&) = delete;
  BlockDeflater& operator=(const BlockDeflater&) = delete;

  /// Compresses the next `n` bytes; returns the chunks that became full.
  std::vector<Chunk> Add(const unsigned char* bytes, std::size_t n);
  /// Ends the stream; returns the rest of it.
  std::vector<Chunk> Finish();

 private:
  int Deflate(int flush, std::vector<Chunk>& full);

  ChunkPool& mPool;
  z_stream mStream{};
  Chunk mOutput;
};

}  // namespace QovJbf
