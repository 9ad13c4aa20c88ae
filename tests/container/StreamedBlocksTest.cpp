#include <gtest/gtest.h>

#include "ContainerSupport.h"
#include "Qov/Util/Raise.h"
#include "support/BuildKind.h"

namespace QovJbf {
namespace {

using namespace Qov::Test;

/// A container whose heavy stream is written to the file while it fills.
class StreamedBlocksTest : public testing::Test {
 protected:
  /// Puts pieces of many sizes through each overload of Put, then some small streams.
  static void Fill(JbFile& file) {
    Index& index = file.GetIndex();
    std::mt19937 random(7);
    for (unsigned i = 0; i < (kIsSlow ? 15 : 60); ++i) {
      const std::string bytes = SomeBytes(random() % 100000, i);
      file.AddBlockTransformation(kStream, kHeavy);
      switch (i % 3) {
        case 0:
          index.Put(kStream, bytes.data(), bytes.size());
          break;
        case 1:
          index.Put(kStream, bytes);
          break;
        default:
          PutInHalves(index, bytes);
      }
      index.FlushFrozen(file.GetStream());
    }
    for (unsigned i = 0; i < 5; ++i) index.Put("small " + std::to_string(i), SomeBytes(5000, i));
    file.AddBlockTransformation("small 1", BlockFlag::kCompressed);
    file.AddBlockTransformation("small 4", BlockFlag::kCompressed);
    file.AddBlockTransformation(kStream, BlockFlag::kCompressed);
  }

  static void PutInHalves(Index& index, const std::string& bytes) {
    std::size_t done = 0;
    index.Put(kStream, bytes.size(), [&](void* target, std::size_t n) {
      bytes.copy(static_cast<char*>(target), n, done);
      done += n;
    });
    EXPECT_EQ(done, bytes.size());
  }

  std::string BytesOf(bool isStreamed, const WriteSettings& settings = {}) {
    WriteContainer(mPath, [&](JbFile& file) {
      file.GetIndex().SetWriting(settings);
      if (isStreamed) file.CompressWhileFilling(kStream);
      Fill(file);
    });
    return ReadFile(mPath);
  }

  TempDir mFolder;
  const std::string mPath = mFolder / "container";
};

TEST_F(StreamedBlocksTest, AreEqualForAnyNumberOfThreads) {
  for (const auto& limit :
       std::initializer_list<std::optional<std::string>>{"100", "5000", "1000000", std::nullopt}) {
    const ScopedEnvironment blockSize(kLimitVariable, limit);
    std::string expected;
    for (const char* threads : {"1", "2", "3", "8"}) {
      const ScopedEnvironment environment(kThreadsVariable, threads);
      for (const bool isStreamed : {false, true}) {
        const std::string bytes = BytesOf(isStreamed);
        if (expected.empty()) expected = bytes;
        EXPECT_TRUE(bytes == expected) << threads << " threads, " << limit.value_or("no");
      }
    }
  }
}

TEST_F(StreamedBlocksTest, HaveTheSameContentWithTheFastCompressor) {
  const auto readContent = [this] {
    JbFile file;
    file.OpenFile(mPath, "rb");
    const auto reader = file.OpenStreamReader(kStream);
    std::string content(reader->GetLength(), '\0');
    reader->ReadVerified(0, content.data(), content.size());
    return content;
  };
  BytesOf(true);
  const std::string expected = readContent();
  for (const char* limit : {"100", "300000", "1000000"}) {
    const ScopedEnvironment blockSize(kLimitVariable, limit);
    for (const std::uint32_t mostAtOnce : {WriteSettings().mMostAtOnce, 500000U}) {
      WriteSettings settings{.mCompressor = Compressor::Fastest, .mMostAtOnce = mostAtOnce};
      std::string first;
      for (const unsigned threads : {1U, 3U}) {
        settings.mThreads = threads;
        for (const bool isStreamed : {false, true}) {
          const std::string bytes = BytesOf(isStreamed, settings);
          if (first.empty()) first = bytes;
          EXPECT_TRUE(bytes == first) << threads << " threads, " << limit;
        }
      }
      EXPECT_TRUE(readContent() == expected) << limit;
    }
  }
}

TEST_F(StreamedBlocksTest, AreWrittenBeforeTheyAreFull) {
  const ScopedEnvironment threads(kThreadsVariable, "1");
  JbFile file;
  file.OpenFile(mPath, "wb+");
  file.WriteHeader();
  file.CompressWhileFilling(kStream);
  const std::string noise = SomeBytes(4000000, 1);
  file.GetIndex().Put(kStream, noise.data(), noise.size());
  EXPECT_EQ(file.GetIndex().GetStreamLength(kStream), noise.size());
  EXPECT_FALSE(file.GetIndex().IsFrozen(0));
  EXPECT_EQ(file.GetIndex().GetBlock(0).GetCapacity(), 0U);
  EXPECT_GT(std::filesystem::file_size(mPath), 1000000U);

  // After an open block they do not have a position yet.
  JbFile other;
  other.OpenFile(mFolder / "other", "wb+");
  other.CompressWhileFilling(kStream);
  other.GetIndex().Put("first", std::uint32_t{1});
  other.GetIndex().Put(kStream, noise.data(), noise.size());
  EXPECT_LT(std::filesystem::file_size(mFolder / "other"), 2800U);
  other.WriteHeader();
  other.GetIndex().WriteAllBuffersToFileStream(other.GetStream());
  other.CloseFile();
  EXPECT_EQ(ReadStreams(mFolder / "other").at(kStream), noise);
}

TEST_F(StreamedBlocksTest, RefuseMoreThanFourGibibytes) {
  JbFile file;
  file.OpenFile(mPath, "wb+");
  file.CompressWhileFilling(kStream);
  Index& index = file.GetIndex();
  index.Put(kStream, std::uint32_t{1});
  const auto unread = [](void*, std::size_t) { FAIL() << "nothing must be read"; };
  ExpectError(ErrorType::MemoryAllocationError, "",
              [&] { index.Put(kStream, std::uint64_t{1} << 32, unread); });
  EXPECT_EQ(index.GetStreamLength(kStream), 4U);
  ExpectError(ErrorType::ReadError, "begun", [&] {
    index.Put(kStream, 0xFFFFFFFFU - 3,
              [](void*, std::size_t) { Qov::Util::Raise("test", ErrorType::ReadError, "begun"); });
  });
  EXPECT_EQ(index.GetWritingBlockIndex(kStream), 1U);  // it did not fit into the first block
}

}  // namespace
}  // namespace QovJbf
