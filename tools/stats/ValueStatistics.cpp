#include "stats/ValueStatistics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "ValueKernels.h"

namespace Qov::Tools {
namespace {

constexpr std::size_t kVectorWidth = 3;

template <class T>
bool IsNumber(T value) {
  return !std::isnan(static_cast<double>(value));
}

/// Adds the components of vectors and their lengths.
template <class T>
void AddVectors(const T* vectors, std::size_t count, std::uint64_t item,
                std::vector<ValueStatistics>& components) {
  VectorBlock<T> block;  // NOLINT(cppcoreguidelines-pro-type-member-init): filled next
  SplitVectors(vectors, count, block);
  for (std::size_t i = 0; i < kVectorWidth; ++i) {
    components[i].Add(block.mComponents[i].data(), count, item);
  }
  components[kVectorWidth].Add(block.mMagnitudes.data(), count, item);
}

/// Adds the components of tuples of any width.
template <class T>
void AddTuples(const T* tuples, std::size_t count, std::uint64_t item,
               std::vector<ValueStatistics>& components) {
  std::array<T, kBlockValues> values;  // NOLINT(cppcoreguidelines-pro-type-member-init): likewise
  for (std::size_t component = 0; component < components.size(); ++component) {
    for (std::size_t i = 0; i < count; ++i) values[i] = tuples[components.size() * i + component];
    components[component].Add(values.data(), count, item);
  }
}

}  // namespace

void CompensatedSum::Add(const CompensatedSum& other) { Add(other.mSum, other.mErrors); }

void CompensatedSum::Add(double sum, double error) {
  Add(sum);
  mErrors += error;
}

double CompensatedSum::Get() const {
  return std::isfinite(mSum) ? mSum + mErrors : mSum;  // after an infinity the errors are NaN
}

template <class T>
void ValueStatistics::Add(const T* values, std::size_t count, std::uint64_t item) {
  const ArrayStatistics range = Summarize(values, count);
  const auto find = [&](double extreme) {
    const T* const found = std::find(values, values + count, static_cast<T>(extreme));
    return item + static_cast<std::uint64_t>(found - values);
  };
  const Replaced replaced = mRange.Add(range);
  if (replaced.mLeast) mLeastItem = find(range.mMinimum);
  if (replaced.mGreatest) mGreatestItem = find(range.mMaximum);
  if (!range.HasRange()) return;
  const double largest = std::max(std::fabs(range.mMinimum), std::fabs(range.mMaximum));
  const std::size_t numLeft = count % kLanes;
  if (range.mNumNaN == 0 && numLeft == 0) return AddNumbers(values, count, largest);
  std::array<T, kBlockValues> numbers;
  T* end = std::copy_if(values, values + count, numbers.begin(), IsNumber<T>);
  while ((end - numbers.begin()) % kLanes != 0) *end++ = T{};
  AddNumbers(numbers.data(), static_cast<std::size_t>(end - numbers.begin()), largest);
}

/// Adds to the sums. `count` is a multiple of kLanes. `largest` is the greatest magnitude.
template <class T>
void ValueStatistics::AddNumbers(const T* numbers, std::size_t count, double largest) {
  if (!std::isfinite(largest)) {
    for (std::size_t i = 0; i < count; ++i) {
      const auto number = static_cast<double>(numbers[i]);
      mSum.Add(number);
      mSquares.Add(number * number);
    }
    return;
  }
  const LaneSums lanes = SumLanes(numbers, count, largest);
  for (std::size_t lane = 0; lane < kLanes; ++lane) {
    mSum.Add(lanes.mSums[lane], lanes.mErrors[lane]);
    mSquares.Add(lanes.mSquares[lane], lanes.mSquareErrors[lane]);
  }
}

ValueStatistics::Replaced ValueStatistics::Add(const ValueStatistics& other) {
  const Replaced replaced = mRange.Add(other.mRange);
  if (replaced.mLeast) mLeastItem = other.mLeastItem;
  if (replaced.mGreatest) mGreatestItem = other.mGreatestItem;
  mSum.Add(other.mSum);
  mSquares.Add(other.mSquares);
  return replaced;
}

double ValueStatistics::CountNumbers() const {
  return static_cast<double>(mRange.mNumValues - mRange.mNumNaN);
}

double ValueStatistics::GetMean() const {
  const double mean = mSum.Get() / CountNumbers();
  // The sum of both infinities is a NaN whose sign depends on the processor.
  return std::isnan(mean) ? std::numeric_limits<double>::quiet_NaN() : mean;
}

double ValueStatistics::GetRootMeanSquare() const {
  return std::sqrt(mSquares.Get() / CountNumbers());
}

template <class T>
std::vector<ValueStatistics> SummarizeComponents(const std::vector<T>& values,
                                                 std::size_t numComponents) {
  const bool areVectors = numComponents == kVectorWidth;
  std::vector<ValueStatistics> components(numComponents + (areVectors ? 1 : 0));
  const std::size_t numTuples = values.size() / numComponents;
  for (std::size_t item = 0; item < numTuples; item += kBlockValues) {
    const T* const tuples = values.data() + numComponents * item;
    const std::size_t count = std::min(kBlockValues, numTuples - item);
    if (numComponents == 1) {
      components[0].Add(tuples, count, item);
    } else if (areVectors) {
      AddVectors(tuples, count, item, components);
    } else {
      AddTuples(tuples, count, item, components);
    }
  }
  const T* const left = values.data() + numComponents * numTuples;
  for (std::size_t i = 0; i < values.size() % numComponents; ++i) {
    components[i].Add(left + i, 1, numTuples);
  }
  return components;
}

template std::vector<ValueStatistics> SummarizeComponents(const std::vector<std::uint32_t>&,
                                                          std::size_t);
template std::vector<ValueStatistics> SummarizeComponents(const std::vector<float>&, std::size_t);

}  // namespace Qov::Tools
