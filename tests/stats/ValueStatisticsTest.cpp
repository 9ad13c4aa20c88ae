#include "stats/ValueStatistics.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <random>

#include "ValueKernels.h"

namespace Qov::Test {
namespace {

using namespace Tools;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// Compares with sums in a wider type, and extremes one value at a time.
void ExpectStatistics(const ValueStatistics& statistics, const std::vector<double>& values) {
  std::size_t least = values.size();
  std::size_t greatest = values.size();
  std::uint64_t numNaN = 0;
  long double sum = 0;
  long double squares = 0;
  long double magnitudes = 0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (std::isnan(values[i])) {
      ++numNaN;
      continue;
    }
    if (least == values.size() || values[i] < values[least]) least = i;
    if (greatest == values.size() || values[i] > values[greatest]) greatest = i;
    sum += values[i];
    squares += static_cast<long double>(values[i]) * values[i];
    magnitudes += std::fabs(values[i]);
  }
  EXPECT_EQ(statistics.GetRange().mNumValues, values.size());
  EXPECT_EQ(statistics.GetRange().mNumNaN, numNaN);
  if (least == values.size()) return;
  EXPECT_EQ(statistics.GetLeastItem(), least);
  EXPECT_EQ(statistics.GetGreatestItem(), greatest);
  const ArrayStatistics& range = statistics.GetRange();
  EXPECT_EQ(range.mMinimum, values[least]);
  EXPECT_EQ(range.mMaximum, values[greatest]);
  EXPECT_EQ(std::signbit(range.mMinimum), std::signbit(values[least]));
  EXPECT_EQ(std::signbit(range.mMaximum), std::signbit(values[greatest]));
  const auto count = static_cast<long double>(values.size() - numNaN);
  if (std::isinf(magnitudes)) {
    EXPECT_EQ(std::isnan(statistics.GetMean()), std::isnan(sum));
    EXPECT_TRUE(std::isinf(statistics.GetRootMeanSquare()));
    return;
  }
  const auto mean = static_cast<double>(sum / count);
  const auto rms = static_cast<double>(std::sqrt(squares / count));
  EXPECT_NEAR(statistics.GetMean(), mean,
              2.5e-16 * std::fabs(mean) + 1e-18 * static_cast<double>(magnitudes / count));
  EXPECT_NEAR(statistics.GetRootMeanSquare(), rms, 2.5e-16 * rms);
}

template <class T>
void ExpectComponents(const std::vector<T>& values, std::size_t width) {
  const auto components = SummarizeComponents(values, width);
  ASSERT_EQ(components.size(), width == 3 ? 4 : width);
  std::vector<std::vector<double>> expected(width);
  for (std::size_t i = 0; i < values.size(); ++i) {
    expected[i % width].push_back(static_cast<double>(values[i]));
  }
  if (width == 3) expected.emplace_back();
  for (std::size_t i = 0; width == 3 && i < expected[2].size(); ++i) {
    expected[3].push_back(std::sqrt(expected[0][i] * expected[0][i] +
                                    expected[1][i] * expected[1][i] +
                                    expected[2][i] * expected[2][i]));
  }
  for (std::size_t i = 0; i < components.size(); ++i) {
    SCOPED_TRACE(testing::Message()
                 << values.size() << " values, width " << width << ", component " << i);
    ExpectStatistics(components[i], expected[i]);
  }
}

/// The sizes leave incomplete tuples, lanes and blocks. Many values are equal, or cancel others.
TEST(ValueStatistics, EqualOneByOneForAnySize) {
  std::mt19937 random(7);
  for (const std::size_t size : {0U, 1U, 3U, 8U, 17U, 1023U, 1024U, 1025U, 3071U, 9300U}) {
    for (std::size_t width = 1; width <= 9; ++width) {
      std::vector<std::uint32_t> integers(size);
      std::vector<float> floats(size);
      std::vector<float> holes(size);
      for (std::size_t i = 0; i < size; ++i) {
        integers[i] = static_cast<std::uint32_t>(random());
        const auto exponent = static_cast<int>(random() % 60) - 30;
        floats[i] = std::ldexp(static_cast<float>(random()) - 2147483648.0F, exponent);
        const auto kind = random() % 8;
        holes[i] = kind < 2 ? kNaN : kind == 2 ? -0.0F : kind == 3 ? 0.0F : floats[i];
      }
      ExpectComponents(integers, width);
      ExpectComponents(floats, width);
      ExpectComponents(holes, width);
    }
  }
}

/// Each place of a block is in another lane or register.
TEST(ValueStatistics, FindSpecialValuesAtAnyPlace) {
  for (const std::size_t width : {1U, 3U}) {
    for (std::size_t place = 0; place < 40; ++place) {
      for (const float special : {kNaN, kInfinity, -kInfinity, 9.0F, -9.0F, 1e30F, 0.0F}) {
        std::vector<float> values(40, 1.0F);
        values[place] = special;
        values.back() = special;
        ExpectComponents(values, width);
        values[(place + 20) % 40] = -special;
        ExpectComponents(values, width);
        std::vector<float> specials(place, special);
        ExpectComponents(specials, width);
      }
    }
  }
}

TEST(ValueStatistics, KeepTheSmallestPartsOfSums) {
  std::vector<float> values(5 * kBlockValues, 0.0F);
  values.front() = 1e30F;
  values[kBlockValues + 1] = 3.0F;
  values[2 * kBlockValues + 2] = 4.0F;
  values.back() = -1e30F;
  const auto statistics = SummarizeComponents(values, 1).front();
  EXPECT_EQ(statistics.GetMean(), 7.0 / static_cast<double>(values.size()));
}

}  // namespace
}  // namespace Qov::Test
