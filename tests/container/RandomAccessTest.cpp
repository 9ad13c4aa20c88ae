#include <gtest/gtest.h>
#include <zlib.h>

#include <atomic>

#include "ContainerSupport.h"
#include "container/BlockCache.h"
#include "support/BuildKind.h"

namespace {

std::atomic<std::uint64_t> gInflated = 0;

}  // namespace

// The linker redirects the library's calls of zlib to these functions.
extern "C" {
int __real_inflate(z_streamp stream, int flush);

int __wrap_inflate(z_streamp stream, int flush) {
  const auto before = stream->total_out;
  const int result = __real_inflate(stream, flush);
  gInflated += stream->total_out - before;
  return result;
}

// DecompressWhole
std::size_t __real__ZN6QovJbf15DecompressWholeEPKvmPvm(const void* stream, std::size_t mostBytes,
                                                       void* content, std::size_t n);

std::size_t __wrap__ZN6QovJbf15DecompressWholeEPKvmPvm(const void* stream, std::size_t mostBytes,
                                                       void* content, std::size_t n) {
  gInflated += n;
  return __real__ZN6QovJbf15DecompressWholeEPKvmPvm(stream, mostBytes, content, n);
}
}

namespace QovJbf {
namespace {

using namespace Qov::Test;

/// Reading in any order must not decompress a whole block, or search all blocks, each time: it
/// would take hours instead of a moment.
TEST(RandomAccess, DoesNotDecompressABlockEachTime) {
  const TempDir folder;
  const ScopedEnvironment limit(kLimitVariable, "2000000");
  const std::string content = SomeBytes(6000000, 1);
  WriteContainer(folder / "file",
                 [&](JbFile& file) { PutInPieces(file, kStream, content, 1000000, kHeavy); });
  const auto reader = OpenReader(folder / "file");
  for (std::size_t i = 1; i < 60000; ++i) {
    // Reads backwards in each of three blocks, and switches block each time.
    const std::size_t offset = (i % 3 + 1) * 2000000 - i * 30;
    std::string part(20, '\0');
    reader->Read(offset, part.data(), part.size());
    ASSERT_EQ(part, content.substr(offset, part.size())) << offset;
  }
  EXPECT_LT(reader->GetNumDiscarded(), 6 * content.size());
}

/// Reads a stream in order, in pieces of at most `piece` bytes, verified or not. Returns the number
/// of bytes that were decompressed.
std::uint64_t CostOfReading(StreamReader& reader, std::uint64_t piece, bool verified) {
  gInflated = 0;
  std::string bytes(piece, '\0');
  for (std::uint64_t offset = 0; offset < reader.GetLength(); offset += piece) {
    const std::size_t n = std::min(piece, reader.GetLength() - offset);
    if (verified) {
      reader.VerifyBefore(offset);
      reader.ReadVerified(offset, bytes.data(), n);
    } else {
      reader.Read(offset, bytes.data(), n);
    }
  }
  return gInflated;
}

TEST(RandomAccess, StoredOrderDecompressesOnceOrTwice) {
  constexpr std::uint64_t kBlocks = 5000000;
  const TempDir folder;
  {
    const ScopedEnvironment limit(kLimitVariable, "1000000");
    WriteContainer(folder / "blocks", [](JbFile& file) {
      PutInPieces(file, kStream, SomeBytes(kBlocks, 1), 999, kHeavy);
    });
  }
  for (const bool verified : {false, true}) {
    EXPECT_EQ(CostOfReading(*OpenReader(folder / "blocks"), 5000, verified), kBlocks);
  }
  if (kIsSlow) return;
  const std::uint64_t tooLarge = BlockCache::kMaxBytes + 1;
  const ScopedEnvironment limit(kLimitVariable, "1000000000");
  WriteContainer(folder / "large", [&](JbFile& file) {
    PutInPieces(file, kStream, std::string(tooLarge, '\0'), 1U << 20U, kHeavy);
  });
  const auto reader = OpenReader(folder / "large");
  EXPECT_EQ(CostOfReading(*reader, 10000000, true), 2 * tooLarge);
  EXPECT_EQ(CostOfReading(*reader, 10000000, true), tooLarge) << "each block is verified once";
}

TEST(RandomAccess, DoesNotSearchAllTinyBlocksEachTime) {
  constexpr std::uint32_t kMany = kIsSlow ? 3000 : 10000;
  const TempDir folder;
  const ScopedEnvironment limit(kLimitVariable, "1");
  WriteContainer(folder / "file", [](JbFile& file) {
    for (std::uint32_t i = 0; i < kMany; ++i) file.GetIndex().Put(kStream, std::uint64_t{i});
  });
  JbFile file;
  file.OpenFile(folder / "file", "rb");
  const auto expect = [&file](std::uint32_t first, std::uint32_t n) {
    file.SetBlockPosition(kStream, 8 * std::uint64_t{first});
    for (std::uint32_t i = first; i < first + n; ++i) {
      std::uint64_t value = 0;
      file.Require(kStream, value);
      ASSERT_EQ(value, i);
    }
  };
  for (int pass = 0; pass < 3; ++pass) {  // blocks that are read again stay in memory
    for (std::uint32_t i = kMany; i-- > 0;) expect(i, 1);
  }
  for (std::uint32_t i = 0; i < kMany; ++i) expect(i % 7, 3);
}

}  // namespace
}  // namespace QovJbf
