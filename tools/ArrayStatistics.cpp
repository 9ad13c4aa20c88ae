#include "ArrayStatistics.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Qov::Tools {

template <class T>
ArrayStatistics Summarize(const std::vector<T>& values) {
  ArrayStatistics statistics;
  statistics.mNumValues = values.size();
  statistics.mMinimum = std::numeric_limits<double>::infinity();
  statistics.mMaximum = -statistics.mMinimum;
  for (const T element : values) {
    const auto value = static_cast<double>(element);
    if (std::isnan(value)) {
      ++statistics.mNumNaN;
      continue;
    }
    statistics.mMinimum = std::min(statistics.mMinimum, value);
    statistics.mMaximum = std::max(statistics.mMaximum, value);
  }
  return statistics;
}

template ArrayStatistics Summarize(const std::vector<std::uint32_t>&);
template ArrayStatistics Summarize(const std::vector<float>&);

}  // namespace Qov::Tools
