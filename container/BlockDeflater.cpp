#include "BlockDeflater.h"

#include <new>
#include <utility>

namespace QovJbf {

BlockDeflater::BlockDeflater(ChunkPool& pool, int level) : mPool(pool) {
  if (deflateInit(&mStream, level) != Z_OK) throw std::bad_alloc();
}

BlockDeflater::~BlockDeflater() {
  mPool.Return(std::move(mOutput));
  deflateEnd(&mStream);
}

std::vector<Chunk> BlockDeflater::Add(const unsigned char* bytes, std::size_t n) {
  std::vector<Chunk> full;
  mStream.next_in = const_cast<Bytef*>(bytes);
  mStream.avail_in = static_cast<uInt>(n);
  while (mStream.avail_in > 0) Deflate(Z_NO_FLUSH, full);
  return full;
}

std::vector<Chunk> BlockDeflater::Finish() {
  std::vector<Chunk> rest;
  while (Deflate(Z_FINISH, rest) != Z_STREAM_END) {
  }
  rest.push_back(std::move(mOutput));
  return rest;
}

// Calls deflate once. Takes a new chunk if the last one is full.
int BlockDeflater::Deflate(int flush, std::vector<Chunk>& full) {
  if (mOutput.GetSpace() == 0) {
    if (mOutput.mData) full.push_back(std::move(mOutput));
    mOutput = mPool.Take();
  }
  mStream.next_out = mOutput.GetEnd();
  mStream.avail_out = static_cast<uInt>(mOutput.GetSpace());
  const int result = deflate(&mStream, flush);
  if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR) throw std::bad_alloc();
  mOutput.mSize = mOutput.mCapacity - mStream.avail_out;
  return result;
}

}  // namespace QovJbf
