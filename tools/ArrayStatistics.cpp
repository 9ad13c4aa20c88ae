#include "ArrayStatistics.h"

#include <algorithm>

#include "ValueKernels.h"

namespace Qov::Tools {
namespace {

/// Returns an extreme as a number. Zero is replaced by the first zero of the values, which may be
/// negative.
template <class T>
double FindExtreme(const T* values, std::size_t count, T extreme) {
  return static_cast<double>(extreme == T{} ? *std::find(values, values + count, extreme)
                                            : extreme);
}

}  // namespace

ArrayStatistics::Replaced ArrayStatistics::Add(const ArrayStatistics& other) {
  Replaced replaced;
  const bool isFirst = !HasRange();
  replaced.mLeast = other.HasRange() && (isFirst || other.mMinimum < mMinimum);
  replaced.mGreatest = other.HasRange() && (isFirst || other.mMaximum > mMaximum);
  if (replaced.mLeast) mMinimum = other.mMinimum;
  if (replaced.mGreatest) mMaximum = other.mMaximum;
  mNumValues += other.mNumValues;
  mNumNaN += other.mNumNaN;
  return replaced;
}

template <class T>
ArrayStatistics Summarize(const T* values, std::size_t count) {
  const ValueRange<T> range = FindRange(values, count);
  ArrayStatistics statistics;
  statistics.mNumValues = count;
  statistics.mNumNaN = range.mNumNaN;
  if (!statistics.HasRange()) return statistics;
  statistics.mMinimum = FindExtreme(values, count, range.mLeast);
  statistics.mMaximum = FindExtreme(values, count, range.mGreatest);
  return statistics;
}

template ArrayStatistics Summarize(const std::uint32_t*, std::size_t);
template ArrayStatistics Summarize(const float*, std::size_t);
template ArrayStatistics Summarize(const double*, std::size_t);

}  // namespace Qov::Tools
