#include "diff/ValueComparison.h"

#include <fmt/format.h>

#include <bit>
#include <cmath>
#include <exception>
#include <limits>
#include <vector>

#include "ErrorText.h"
#include "SureValues.h"
#include "ValueText.h"

namespace Qov::Tools {
namespace {

double Number(std::uint32_t bits, bool integer) {
  return integer ? static_cast<double>(bits) : static_cast<double>(std::bit_cast<float>(bits));
}

double Distance(double a, double b) {
  if (std::isnan(a) && std::isnan(b)) return 0.0;
  if (a == b) return 0.0;
  return std::fabs(a - b);  // NaN if one of them is
}

/// For finding the largest: a NaN beyond all numbers.
bool IsLarger(double distance, double than) {
  if (std::isnan(than)) return false;
  return std::isnan(distance) || distance > than;
}

void CompareElements(const std::vector<std::uint32_t>& a, const std::vector<std::uint32_t>& b,
                     const Tolerance* tolerance, ValueComparison& comparison) {
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (a[i] == b[i]) continue;
    if (tolerance != nullptr && !comparison.mIntegers &&
        tolerance->Accepts(std::bit_cast<float>(a[i]), std::bit_cast<float>(b[i]))) {
      continue;
    }
    const double distance =
        Distance(Number(a[i], comparison.mIntegers), Number(b[i], comparison.mIntegers));
    const bool isFirst = comparison.mNumDiffering++ == 0;
    if (!isFirst && !IsLarger(distance, comparison.mDifference)) continue;
    comparison.mPosition = i;
    comparison.mBitsA = a[i];
    comparison.mBitsB = b[i];
    comparison.mDifference = distance;
  }
}

}  // namespace

ValueComparison CompareValues(const QovRyx::NumericArray& a, const QovRyx::NumericArray& b,
                              bool integers, const Tolerance* tolerance) {
  ValueComparison comparison;
  comparison.mIntegers = integers;
  const char* which = "A";
  try {
    std::vector<std::uint32_t> valuesA;
    GetSureValues(a, valuesA);
    which = "B";
    std::vector<std::uint32_t> valuesB;
    GetSureValues(b, valuesB);
    if (valuesA.size() != valuesB.size()) {
      comparison.mTrouble = "the numbers of values differ";
      return comparison;
    }
    comparison.mNumValues = valuesA.size();
    CompareElements(valuesA, valuesB, tolerance, comparison);
  } catch (const std::exception& error) {
    comparison.mTrouble = fmt::format("{}: {}", which, ErrorText(error));
  }
  return comparison;
}

std::string ElementText(std::uint32_t bits, bool integer) {
  if (integer) return fmt::format("{}", bits);
  const auto value = std::bit_cast<float>(bits);
  return std::isnan(value) ? fmt::format("NaN (0x{:08X})", bits) : FloatText(value);
}

}  // namespace Qov::Tools
