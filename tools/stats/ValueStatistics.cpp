#include "stats/ValueStatistics.h"

#include <cmath>
#include <limits>

namespace Qov::Tools {

void CompensatedSum::Add(const CompensatedSum& other) {
  Add(other.mSum);
  mErrors += other.mErrors;
}

double CompensatedSum::Get() const {
  return std::isfinite(mSum) ? mSum + mErrors : mSum;  // after an infinity the errors are NaN
}

ValueStatistics::Replaced ValueStatistics::Add(const ValueStatistics& other) {
  Replaced replaced;
  const bool isFirst = !mRange.HasRange();
  const ArrayStatistics& range = other.mRange;
  replaced.mLeast = range.HasRange() && (isFirst || range.mMinimum < mRange.mMinimum);
  replaced.mGreatest = range.HasRange() && (isFirst || range.mMaximum > mRange.mMaximum);
  if (replaced.mLeast) mRange.mMinimum = range.mMinimum;
  if (replaced.mGreatest) mRange.mMaximum = range.mMaximum;
  if (replaced.mLeast) mLeastItem = other.mLeastItem;
  if (replaced.mGreatest) mGreatestItem = other.mGreatestItem;
  mRange.mNumValues += range.mNumValues;
  mRange.mNumNaN += range.mNumNaN;
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

}  // namespace Qov::Tools
