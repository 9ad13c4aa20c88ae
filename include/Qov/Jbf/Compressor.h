#pragma once

#include <cstdint>

namespace QovJbf {

/// The code that compresses blocks. The blocks are zlib streams in both cases: every reader of the
/// format can read them.
enum class Compressor : std::uint8_t {
  /// zlib. The bytes of a block are those of one compress2 call. RyxMerge uses it.
  Zlib,
  /// libdeflate if the library was built with it, else zlib. Two to three times as fast, with files
  /// of about the same size. The bytes of a block depend on the version of libdeflate. Blocks of
  /// more than 128 MiB are compressed with zlib, because libdeflate needs the whole block in
  /// memory.
  Fastest
};

}  // namespace QovJbf
