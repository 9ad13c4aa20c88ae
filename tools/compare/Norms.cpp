#include "compare/Norms.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "Plural.h"
#include "Qov/Util/Assert.h"
#include "stats/ValueStatistics.h"

namespace Qov::Tools {

ValueNorms ComputeNorms(const std::vector<std::uint32_t>& a, const std::vector<std::uint32_t>& b,
                        bool integers) {
  QOV_ASSERT(a.size() == b.size());
  const auto number = [integers](std::uint32_t bits) {
    return integers ? static_cast<double>(bits) : static_cast<double>(std::bit_cast<float>(bits));
  };
  ValueNorms norms;
  CompensatedSum squares;
  CompensatedSum squaresOfA;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const double valueA = number(a[i]);
    const double difference = number(b[i]) - valueA;
    if (!std::isfinite(difference)) {
      ++norms.mNumLeftOut;
      continue;
    }
    norms.mLargest = std::max(norms.mLargest, std::fabs(difference));
    squares.Add(difference * difference);
    squaresOfA.Add(valueA * valueA);
  }
  norms.mL2 = std::sqrt(squares.Get());
  if (norms.mL2 == 0.0) return norms;
  const double normOfA = std::sqrt(squaresOfA.Get());
  norms.mRelativeL2 =
      normOfA == 0.0 ? std::numeric_limits<double>::infinity() : norms.mL2 / normOfA;
  return norms;
}

std::string NormsText(const ValueNorms& norms) {
  std::string text = fmt::format("max {:.6g}, L2 {:.6g}, relative L2 {:.6g}", norms.mLargest,
                                 norms.mL2, norms.mRelativeL2);
  if (norms.mNumLeftOut != 0) {
    text += fmt::format(" ({} with a value that is not finite left out)",
                        Plural(norms.mNumLeftOut, "pair"));
  }
  return text;
}

}  // namespace Qov::Tools
