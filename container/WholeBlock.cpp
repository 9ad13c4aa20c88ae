#include "WholeBlock.h"

#include <new>

#ifdef RYXMERGE_WITH_LIBDEFLATE
#include <libdeflate.h>

#include <memory>
#else
#include <zlib.h>
#endif

namespace QovJbf {

#ifdef RYXMERGE_WITH_LIBDEFLATE

namespace {

struct Free {
  void operator()(libdeflate_compressor* compressor) const {
    libdeflate_free_compressor(compressor);
  }
  void operator()(libdeflate_decompressor* decompressor) const {
    libdeflate_free_decompressor(decompressor);
  }
};

}  // namespace

std::size_t GetWholeBound(std::size_t n) { return libdeflate_zlib_compress_bound(nullptr, n); }

std::size_t CompressWhole(int level, const void* content, std::size_t n, void* stream) {
  const std::unique_ptr<libdeflate_compressor, Free> compressor(libdeflate_alloc_compressor(level));
  if (!compressor) throw std::bad_alloc();
  const std::size_t length =
      libdeflate_zlib_compress(compressor.get(), content, n, stream, GetWholeBound(n));
  if (length == 0) throw std::bad_alloc();
  return length;
}

std::size_t DecompressWhole(const void* stream, std::size_t mostBytes, void* content,
                            std::size_t n) {
  const std::unique_ptr<libdeflate_decompressor, Free> decompressor(
      libdeflate_alloc_decompressor());
  if (!decompressor) return 0;
  std::size_t length = 0;
  const libdeflate_result result = libdeflate_zlib_decompress_ex(
      decompressor.get(), stream, mostBytes, content, n, &length, nullptr);
  return result == LIBDEFLATE_SUCCESS ? length : 0;
}

#else

std::size_t GetWholeBound(std::size_t n) { return compressBound(n); }

std::size_t CompressWhole(int level, const void* content, std::size_t n, void* stream) {
  uLongf length = GetWholeBound(n);
  const int result =
      compress2(static_cast<Bytef*>(stream), &length, static_cast<const Bytef*>(content), n, level);
  if (result != Z_OK) throw std::bad_alloc();
  return length;
}

std::size_t DecompressWhole(const void* stream, std::size_t mostBytes, void* content,
                            std::size_t n) {
  Bytef more = 0;  // for one byte that should not be there, because uncompress2 needs room
  uLongf length = n == 0 ? 1 : n;
  uLong streamLength = mostBytes;
  const int result = uncompress2(n == 0 ? &more : static_cast<Bytef*>(content), &length,
                                 static_cast<const Bytef*>(stream), &streamLength);
  return result == Z_OK && length == n ? streamLength : 0;
}

#endif

}  // namespace QovJbf
