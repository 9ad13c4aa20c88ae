#include "picture/Ticks.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace Qov::Tools {
namespace {

TEST(Ticks, AreRoundAndTheirTextsHaveTheSameDecimals) {
  struct Row {
    double mLow, mHigh;
    std::size_t mMost;
    std::vector<std::string> mTexts;
  };
  const std::vector<Row> rows = {
      {0, 1, 6, {"0.0", "0.2", "0.4", "0.6", "0.8", "1.0"}},
      {0.1, 0.35, 6, {"0.10", "0.15", "0.20", "0.25", "0.30", "0.35"}},
      {-1.93, 1.87, 8, {"-1.5", "-1.0", "-0.5", "0.0", "0.5", "1.0", "1.5"}},
      {3, 98, 5, {"20", "40", "60", "80"}},
      {0, 3e6, 4, {"0", "1e+06", "2e+06", "3e+06"}},
      {0, 1e-5, 3, {"0", "5e-06", "1e-05"}},
      {100000.25, 100000.75, 3, {"100000.4", "100000.6"}},
      {-3e38, 3e38, 3, {"-2e+38", "0", "2e+38"}},
      {7.25, 7.25, 5, {"7.25"}},
      {0, 0, 5, {"0"}},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(FormatTicks(MakeTicks(row.mLow, row.mHigh, row.mMost)), row.mTexts)
        << row.mLow << " to " << row.mHigh;
  }
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_TRUE(MakeTicks(nan, 1, 5).empty());
  EXPECT_TRUE(MakeTicks(0, infinity, 5).empty());
  EXPECT_TRUE(MakeTicks(2, 1, 5).empty());
}

TEST(Ticks, AreInTheRangeAndNotTooManyForAnyRange) {
  for (double low : {-1e30, -17.3, -1e-7, 0.0, 1e-30, 4.4, 1e9}) {
    for (int exponent = -40; exponent < 38; ++exponent) {
      const double size = 3.1 * std::pow(10, exponent);
      const auto ticks = MakeTicks(low, low + size, 7);
      ASSERT_GE(ticks.size(), 1U);
      ASSERT_LE(ticks.size(), 7U);
      for (std::size_t i = 0; i < ticks.size(); ++i) {
        EXPECT_GE(ticks[i], low - 1e-6 * size);
        EXPECT_LE(ticks[i], low + size + 1e-6 * size);
        if (i > 0) {
          EXPECT_LT(ticks[i - 1], ticks[i]);
        }
      }
    }
  }
}

TEST(Ticks, ShortNumbersHaveFourDigits) {
  const std::vector<std::pair<double, std::string>> rows = {{0, "0"},
                                                            {-0.0, "0"},
                                                            {2, "2"},
                                                            {-2.5, "-2.5"},
                                                            {3.14159, "3.142"},
                                                            {12345.6, "12346"},
                                                            {0.00123456, "0.001235"},
                                                            {1.5e7, "1.5e+07"},
                                                            {1.23456e-5, "1.235e-05"},
                                                            {100, "100"},
                                                            {HUGE_VAL, "inf"}};
  for (const auto& [value, text] : rows) EXPECT_EQ(ShortNumber(value), text);
}

}  // namespace
}  // namespace Qov::Tools
