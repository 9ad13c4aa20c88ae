#include "ProgressLine.h"

#include <gmock/gmock.h>

#include <ostream>
#include <sstream>

namespace {

using testing::IsEmpty;

/// Returns the visible text of a terminal after this output.
std::string Seen(const std::string& drawn) {
  std::string line;
  std::size_t column = 0;
  for (const char c : drawn) {
    if (c == '\r') {
      column = 0;
    } else if (c == '\b') {
      --column;
    } else {
      line.resize(std::max(line.size(), column + 1), ' ');
      line[column++] = c;
    }
  }
  line.erase(line.find_last_not_of(' ') + 1);
  return line;
}

class Progress : public testing::Test {
 protected:
  void AdvanceAfter(int milliseconds, std::uint64_t numBytes) {
    mNow += std::chrono::milliseconds(milliseconds);
    mLine.Advance(numBytes);
  }

  ProgressLine::Time mNow = std::chrono::steady_clock::now();
  std::ostringstream mTerminal;
  std::size_t mNumDrawn = 0;
  ProgressLine mLine{[this] { return mNow; },
                     [this](const std::string& text) {
                       mTerminal << text;
                       ++mNumDrawn;
                     },
                     40};
};

TEST_F(Progress, ShowsBytesRateAndRemainingTime) {
  mLine.Start(2000000000);
  AdvanceAfter(199, 1);
  EXPECT_THAT(mTerminal.str(), IsEmpty());
  AdvanceAfter(1801, 99999999);
  EXPECT_EQ(Seen(mTerminal.str()), "100 of 2000 MB, 50 MB/s, 0:38 left");
  AdvanceAfter(98000, 0);
  EXPECT_EQ(Seen(mTerminal.str()), "100 of 2000 MB, 1 MB/s, 31:40 left");
  AdvanceAfter(900000, 0);
  EXPECT_EQ(Seen(mTerminal.str()), "100 of 2000 MB, 0 MB/s, 5:16:40 left");
  AdvanceAfter(1000, 1900000000);
  EXPECT_EQ(Seen(mTerminal.str()), "2000 of 2000 MB, 2 MB/s, finishing");
  mLine.Finish();
  EXPECT_THAT(Seen(mTerminal.str()), IsEmpty());
}

TEST_F(Progress, DrawsAtMostFiveTimesPerSecond) {
  mLine.Start(1000);
  for (int i = 0; i < 1000; ++i) AdvanceAfter(3, 1);
  EXPECT_GT(mNumDrawn, 10U);
  EXPECT_LE(mNumDrawn, 15U);
}

TEST_F(Progress, FitsTheWidthOfTheTerminal) {
  mLine.Start(123456789000000);
  AdvanceAfter(200, 1234567890);
  EXPECT_EQ(Seen(mTerminal.str()), "1235 of 123456789 MB, 6173 MB/s, 5:33:2");
}

TEST_F(Progress, NeverMixesWithOtherText) {
  ProgressAwareBuffer buffer(mLine, mTerminal.rdbuf());
  std::ostream other(&buffer);
  mLine.Start(1000000);
  AdvanceAfter(200, 250000);
  other << "An error" << std::endl;
  const std::string text = mTerminal.str();
  EXPECT_EQ(Seen(text.substr(0, text.find("An error"))), "");
  EXPECT_TRUE(text.ends_with("\rAn error\n"));
  AdvanceAfter(200, 250000);
  other.put('!');
  EXPECT_TRUE(mTerminal.str().ends_with("\r!"));
}

}  // namespace
