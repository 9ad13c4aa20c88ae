#include "compare/Sets.h"

#include <fmt/format.h>

#include <algorithm>

namespace Qov::Tools {

std::string DescribeDifference(const QovRyx::SetColumns::View& a,
                               const QovRyx::SetColumns::View& b) {
  if (a.mValues.size() != b.mValues.size()) {
    return fmt::format("{} and {} values", a.mValues.size(), b.mValues.size());
  }
  const auto first = std::mismatch(a.mValues.begin(), a.mValues.end(), b.mValues.begin()).first;
  if (first == a.mValues.end()) return "";
  return fmt::format("the values differ from position {} on", first - a.mValues.begin());
}

}  // namespace Qov::Tools
