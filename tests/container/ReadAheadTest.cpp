#include "container/ReadAhead.h"

#include <gtest/gtest.h>

#include "ContainerSupport.h"
#include "Qov/Jbf/BlockZlibUnCompressor.h"

namespace QovJbf {
namespace {

using namespace Qov::Test;

/// Two files with 30 blocks of 10000 bytes each.
class ReadAheadTest : public testing::TestWithParam<const char*> {
 protected:
  static constexpr std::size_t kBlock = 10000;
  static constexpr std::size_t kNumBlocks = 30;

  std::string PathOf(std::size_t file) { return mFolder / ("file" + std::to_string(file)); }
  void Open() {
    for (std::size_t file = 0; file < 2; ++file) {
      mContent[file] = SomeBytes(kBlock * kNumBlocks, static_cast<unsigned>(file));
      WriteContainer(PathOf(file), [&](JbFile& container) {
        PutInPieces(container, kStream, mContent[file], kBlock, kHeavy);
      });
      OpenReader(file);
    }
  }
  void OpenReader(std::size_t file) {
    JbFile container;
    container.OpenFile(PathOf(file), "rb");
    mReaders[file] = container.OpenStreamReader(kStream);
  }

  /// Returns parts of `n` bytes with `step` bytes between their starts, in turn of both files.
  ReadAhead::Parts Plan(std::size_t step, std::size_t n) const {
    ReadAhead::Parts parts;
    for (std::size_t at = 0; at + n <= kBlock * kNumBlocks; at += step) {
      for (const auto& reader : mReaders) {
        if (reader) parts.push_back({reader.get(), at, n});
      }
    }
    return parts;
  }
  void ExpectContent(const ReadAhead::Part& part, bool verified) {
    const std::size_t file = part.mpReader == mReaders[0].get() ? 0 : 1;
    StreamReader& reader = *mReaders[file];
    std::string bytes(part.mSize, '\0');
    if (verified) reader.VerifyBefore(part.mOffset);
    verified ? reader.ReadVerified(part.mOffset, bytes.data(), bytes.size())
             : reader.Read(part.mOffset, bytes.data(), bytes.size());
    EXPECT_EQ(bytes, mContent[file].substr(part.mOffset, part.mSize)) << file << part.mOffset;
  }

  const ScopedEnvironment mLimit{kLimitVariable, std::to_string(kBlock).c_str()};
  const ScopedEnvironment mThreads{kThreadsVariable, GetParam()};
  TempDir mFolder;
  std::string mContent[2];
  std::shared_ptr<StreamReader> mReaders[2];
};

INSTANTIATE_TEST_SUITE_P(Threads, ReadAheadTest, testing::Values("1", "2", "8"));

TEST_P(ReadAheadTest, ReadsTheSameBytesWhateverIsPlanned) {
  Open();
  std::mt19937 random(1);
  for (const std::uint64_t memory : {0U, 20000U, 100000U, 10000000U}) {
    using Sizes = std::pair<std::size_t, std::size_t>;
    for (const auto& [step, n] :
         {Sizes(kBlock, kBlock), Sizes(700, 700), Sizes(4000, 25000), Sizes(35000, 100)}) {
      const ReadAhead::Parts parts = Plan(step, n);
      ReadAhead::Parts read = parts;
      for (const char* change : {"nothing", "some are skipped", "any order"}) {
        if (std::string(change) == "some are skipped") {
          std::erase_if(read, [&random](const auto&) { return random() % 3 == 0; });
        } else if (std::string(change) == "any order") {
          std::shuffle(read.begin(), read.end(), random);
        }
        const ReadAhead ahead(parts, memory);
        for (const ReadAhead::Part& part : read) ExpectContent(part, random() % 2 == 0);
      }
    }
  }
}

TEST_P(ReadAheadTest, ReadsAppendedParts) {
  Open();
  for (const std::uint64_t memory : {0U, 25000U, 60000U, 10000000U}) {
    ReadAhead ahead({}, memory);
    ahead.Append(Plan(4000, 25000));
    for (int round = 0; round < 5; ++round) {
      const ReadAhead::Parts parts = Plan(kBlock * 3, kBlock);
      ahead.Append(parts);
      for (const ReadAhead::Part& part : parts) ExpectContent(part, round % 2 == 0);
      const auto file = static_cast<std::size_t>(round % 2);
      mReaders[file].reset();
      OpenReader(file);  // often at the same address
    }
  }
}

TEST_P(ReadAheadTest, OutlivesReaders) {
  Open();
  const ReadAhead ahead(Plan(kBlock, kBlock));
  ExpectContent({mReaders[0].get(), 0, 5}, false);
  mReaders[0].reset();
  ExpectContent({mReaders[1].get(), 0, kBlock * kNumBlocks}, true);
  {
    const ReadAhead inner(Plan(700, 700));
    ExpectContent({mReaders[1].get(), 0, kBlock * kNumBlocks}, false);
  }
  OpenReader(0);
  ExpectContent({mReaders[0].get(), kBlock, kBlock}, false);
}

TEST_P(ReadAheadTest, LeavesErrorsToTheReader) {
  Open();
  std::string bytes = ReadFile(PathOf(0));
  bytes[bytes.size() / 2] ^= 1;
  WriteFile(PathOf(0), bytes);
  OpenReader(0);
  const auto readAll = [this] {
    const CapturedErrors errors;
    std::string texts;
    for (std::size_t at = 0; at < kBlock * kNumBlocks; at += 2500) {
      std::string part(2500, '\0');
      try {
        mReaders[0]->ReadVerified(at, part.data(), part.size());
      } catch (const DamagedBlock&) {
        texts += std::to_string(at) + ' ';
      }
    }
    return texts + errors.Text();
  };
  const ReadAhead::Parts parts = Plan(kBlock, kBlock);
  std::string found;
  {
    const ReadAhead ahead(parts);
    found = readAll();
  }
  OpenReader(0);
  EXPECT_EQ(found, readAll());
  EXPECT_NE(found, "");
}

}  // namespace
}  // namespace QovJbf
