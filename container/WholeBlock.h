#pragma once

#include <cstddef>
#include <cstdint>

/// Compression and decompression of blocks that are in memory as a whole. Uses libdeflate if the
/// library is built with it (RYXMERGE_WITH_LIBDEFLATE), else zlib. Streams are zlib streams in both
/// cases: any reader can decompress them.
///
/// All functions can be called by several threads at a time. They do not log.
namespace QovJbf {

/// Readers decompress a block as a whole if its content and its compressed form have at most this
/// many bytes together.
inline constexpr std::uint64_t kMostWhole = std::uint64_t{160} << 20;

/// Returns the largest length of the stream of `n` bytes.
std::size_t GetWholeBound(std::size_t n);

/// Compresses `n` bytes to `stream`, which has at least GetWholeBound(n) bytes. Returns the length
/// of the stream. `level` is from 1 to 9. The bytes are not the same with libdeflate and with zlib.
/// Throws std::bad_alloc.
std::size_t CompressWhole(int level, const void* content, std::size_t n, void* stream);

/// Decompresses a stream to `content`. Returns the length of the stream if it is complete and
/// sound, its checksum is right and its content has exactly `n` bytes. It can be less than
/// `mostBytes`, because bytes may follow the stream. Otherwise, also if there is no memory, returns
/// 0; `content` is undefined then. BlockInflater tells the reason.
///
/// libdeflate accepts a few streams that zlib refuses: codes with too many symbols, symbols that
/// deflate does not use, the unused codeword of a code with one symbol, and repeats of code lengths
/// that go too far. Compressors do not write them. Length and checksum of the content are compared
/// for these streams too, so the content is as written.
std::size_t DecompressWhole(const void* stream, std::size_t mostBytes, void* content,
                            std::size_t n);

}  // namespace QovJbf
