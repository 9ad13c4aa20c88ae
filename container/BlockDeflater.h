#pragma once

#include <zlib.h>

#include <cstddef>
#include <vector>

#include "ChunkPool.h"

namespace QovJbf {

/// Compresses one block piece by piece. The zlib stream has the same bytes as the stream that
/// BlockZlibCompressor makes of the whole block, if all pieces except the last one have
/// ChunkPool::kChunkSize bytes.
///
/// Runs on worker threads: throws std::bad_alloc for errors of memory or of zlib, and does not log.
class BlockDeflater {
 public:
  BlockDeflater(ChunkPool& pool, int level);
  ~BlockDeflater();
  BlockDeflater(const BlockDeflater&) = delete;
  BlockDeflater& operator=(const BlockDeflater&) = delete;

  /// Compresses the next `n` bytes. Returns the chunks that became full.
  std::vector<Chunk> Add(const unsigned char* bytes, std::size_t n);
  /// Ends the stream. Returns the remaining chunks.
  std::vector<Chunk> Finish();

 private:
  int Deflate(int flush, std::vector<Chunk>& full);

  ChunkPool& mPool;
  z_stream mStream{};
  Chunk mOutput;
};

}  // namespace QovJbf
