#include "Qov/Jbf/StreamReader.h"

#include <gtest/gtest.h>

#include "ContainerSupport.h"
#include "Qov/Jbf/BlockZlibUnCompressor.h"
#include "support/BuildKind.h"

namespace QovJbf {
namespace {

using namespace Qov::Test;

std::string ReadPart(StreamReader& reader, std::uint64_t offset, std::size_t n) {
  std::string part(n, '\0');
  reader.Read(offset, part.data(), n);
  return part;
}

std::string ReadVerified(StreamReader& reader, std::uint64_t offset, std::size_t n) {
  std::string part(n, '\0');
  reader.ReadVerified(offset, part.data(), n);
  return part;
}

class StreamReaderTest : public testing::Test {
 protected:
  void Write(const std::string& content, std::size_t piece, std::uint8_t flags) {
    WriteContainer(mPath, [&](JbFile& file) { PutInPieces(file, kStream, content, piece, flags); });
  }

  TempDir mFolder;
  const std::string mPath = mFolder / "container";
};

TEST_F(StreamReaderTest, ReadsAtAnyOffset) {
  const std::string content = SomeBytes(300000, 1);
  std::mt19937 random(2);
  for (const std::uint8_t flags : {kHeavy, BlockFlag::kFreezeWhenFull}) {
    for (const char* limit : {"1000", "70000", "1000000"}) {
      const ScopedEnvironment environment(kLimitVariable, limit);
      Write(content, 333, flags);
      const auto reader = OpenReader(mPath);
      ASSERT_EQ(reader->GetLength(), content.size());
      EXPECT_EQ(ReadPart(*reader, 0, content.size()), content);
      for (int i = 0; i < 50; ++i) {
        const std::size_t offset = random() % content.size();
        const std::size_t n = random() % std::min<std::size_t>(content.size() - offset, 20000);
        ASSERT_EQ(ReadPart(*reader, offset, n), content.substr(offset, n)) << offset << ' ' << n;
        ASSERT_EQ(ReadVerified(*reader, offset / 2, n), content.substr(offset / 2, n)) << offset;
      }
    }
  }
}

TEST_F(StreamReaderTest, RefusesToReadAfterTheEnd) {
  Write("0123456789", 10, kHeavy);
  const auto reader = OpenReader(mPath);
  EXPECT_EQ(ReadPart(*reader, 10, 0), "");
  const auto expectTooFar = [&](std::uint64_t offset, std::size_t n) {
    ExpectError(ErrorType::OutOfBounds, "Not enough bytes in the block",
                [&] { reader->Read(offset, nullptr, n); });
  };
  expectTooFar(10, 1);
  expectTooFar(0, 11);
  expectTooFar(0xFFFFFFFFFFFFFFFF, 2);
  EXPECT_EQ(ReadPart(*reader, 9, 1), "9");

  JbFile file;
  ExpectError(ErrorType::ReadError, "", [&] { file.OpenStreamReader(kStream); });
  file.OpenFile(mPath, "rb");
  EXPECT_EQ(file.OpenStreamReader("absent")->GetLength(), 0U);
}

TEST_F(StreamReaderTest, RecognisesItsFileUnderOtherPaths) {
  Write("content", 7, 0);
  const std::string other = mFolder / "other";
  WriteFile(other, ReadFile(mPath));
  const auto reader = OpenReader(mPath);
  EXPECT_TRUE(reader->ReadsFrom(mPath));
  EXPECT_TRUE(reader->ReadsFrom(mFolder / "./container"));
  EXPECT_FALSE(reader->ReadsFrom(other));
  EXPECT_FALSE(reader->ReadsFrom(mFolder / "absent"));
  EXPECT_EQ(reader->GetPath(), mPath);
}

/// One compressed block at the end of the file. The tests change its length field and its content.
class DamagedStreamTest : public StreamReaderTest {
 protected:
  static constexpr std::size_t kBlock = 2800;

  DamagedStreamTest() {
    Write(mContent, mContent.size(), kHeavy);
    mBytes = ReadFile(mPath);
  }

  std::shared_ptr<StreamReader> OpenWith(std::size_t at, const std::string& bytes) {
    WriteFile(mPath, std::string(mBytes).replace(at, bytes.size(), bytes));
    return OpenReader(mPath);
  }

  const std::string mContent = SomeBytes(100000, 1);
  std::string mBytes;
  const CapturedErrors mErrors;
};

TEST_F(DamagedStreamTest, ReportsWrongChecksumsAndLengths) {
  const auto damaged = OpenWith(mBytes.size() - 1, "?");
  EXPECT_EQ(ReadPart(*damaged, 0, 99999), mContent.substr(0, 99999));
  EXPECT_THROW(ReadPart(*damaged, 99999, 1), DamagedBlock);
  EXPECT_EQ(mErrors.Text(), "Error -3 while uncompressing block \n");
  EXPECT_EQ(ReadPart(*damaged, 5, 10), mContent.substr(5, 10))
      << "reading continues after an error";

  const auto tooShort = OpenWith(kBlock, Image(99999U));
  EXPECT_EQ(tooShort->GetLength(), 99999U);
  EXPECT_EQ(ReadPart(*tooShort, 0, 99998), mContent.substr(0, 99998));
  EXPECT_THROW(ReadPart(*tooShort, 0, 99999), DamagedBlock);
  const auto tooLong = OpenWith(kBlock, Image(100001U));
  EXPECT_EQ(ReadPart(*tooLong, 0, 100000), mContent);
  EXPECT_THROW(ReadPart(*tooLong, 100000, 1), DamagedBlock);
  JbFile file;
  file.OpenFile(mPath, "rb");
  EXPECT_THROW(file.SetBlockPosition(kStream, 5), DamagedBlock);
  ExpectError(ErrorType::OutOfBounds, "Not enough bytes in the block",
              [&] { OpenWith(kBlock, Image(0xFFFFFFFFU)); });
}

TEST_F(DamagedStreamTest, DoesNotDecompressSkippedBlocks) {
  const ScopedEnvironment limit(kLimitVariable, "1000");
  Write(mContent, 1000, kHeavy);
  mBytes = ReadFile(mPath);
  // The content of the first block is damaged, which only reading from that block reports.
  const auto reader = OpenWith(kBlock + 4, std::string(50, '?'));
  EXPECT_EQ(ReadPart(*reader, 50000, 3000), mContent.substr(50000, 3000));
  EXPECT_EQ(ReadPart(*reader, 1500, 1), mContent.substr(1500, 1));
  EXPECT_THROW(ReadPart(*reader, 999, 2), DamagedBlock);

  JbFile file;
  file.OpenFile(mPath, "rb");
  std::string part(1000, '\0');
  file.SetBlockPosition(kStream, 70000);
  file.RequireBytes(kStream, part.data(), 1000);
  EXPECT_EQ(part, mContent.substr(70000, 1000));
}

TEST_F(DamagedStreamTest, ManyReadersInTheMiddleOfABlockContinueThere) {
  if (kIsSanitized) GTEST_SKIP() << "the inflaters take too much memory";
  Write(mContent.substr(0, 1000), 1000, kHeavy);
  std::vector<std::shared_ptr<StreamReader>> readers(8300);  // more than have an inflater
  for (auto& reader : readers) {
    reader = OpenReader(mPath);
    ASSERT_EQ(ReadPart(*reader, 0, 500), mContent.substr(0, 500));
  }
  for (auto& reader : readers) {
    ASSERT_EQ(ReadPart(*reader, 500, 490), mContent.substr(500, 490));
    reader->Verify();
  }
}

/// Two blocks of 1000 bytes. The content of the first block or its stored length is damaged.
class TwoBlocksTest : public DamagedStreamTest {
 protected:
  TwoBlocksTest() {
    const ScopedEnvironment limit(kLimitVariable, "1000");
    Write(mContent.substr(0, 2000), 1000, kHeavy);
    mBytes = ReadFile(mPath);
    mEndOfFirst = kBlock + OpenReader(mPath)->FindBlock(0, 1)->mStoredSize;
  }
  std::shared_ptr<StreamReader> OpenDamaged() {
    return OpenWith(mEndOfFirst - 1, std::string(1, static_cast<char>(~mBytes[mEndOfFirst - 1])));
  }

  std::size_t mEndOfFirst = 0;
};

TEST_F(TwoBlocksTest, BlocksAreVerifiedBeforeLaterOnesAreRead) {
  const auto reader = OpenDamaged();
  EXPECT_EQ(ReadPart(*reader, 10, 20), mContent.substr(10, 20));
  for (int i = 0; i < 2; ++i) EXPECT_THROW(ReadPart(*reader, 1000, 1), DamagedBlock);
  EXPECT_THROW(reader->Verify(), DamagedBlock);
  const auto other = OpenDamaged();
  EXPECT_EQ(ReadPart(*other, 1000, 1000), mContent.substr(1000, 1000));
  other->Verify();
}

TEST_F(TwoBlocksTest, VerifiedReadsReturnNothingOfADamagedBlock) {
  const auto damaged = OpenDamaged();
  for (int i = 0; i < 2; ++i) EXPECT_THROW(ReadVerified(*damaged, 10, 20), DamagedBlock);
  EXPECT_EQ(mErrors.Text(), "Error -3 while uncompressing block \n") << "decompressed once";
  EXPECT_THROW(ReadVerified(*damaged, 990, 20), DamagedBlock);
  EXPECT_EQ(ReadVerified(*damaged, 1000, 1000), mContent.substr(1000, 1000));
  EXPECT_THROW(damaged->VerifyBefore(1000), DamagedBlock);
  damaged->VerifyBefore(999);

  // The second block is sound, but does not begin at the offset that the first block implies.
  const auto longer = OpenWith(kBlock, Image(1001U));
  EXPECT_EQ(ReadVerified(*longer, 1001, 10), mContent.substr(1000, 10));
  EXPECT_THROW(longer->VerifyBefore(1001), DamagedBlock);
}

}  // namespace
}  // namespace QovJbf
