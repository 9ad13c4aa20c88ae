#include "SameAttributes.h"

#include <algorithm>
#include <bit>
#include <cstdint>

namespace Qov::Tools {
namespace {

/// Numbers as bits.
struct BitsOf {
  QovUtil::AttributeValue operator()(float value) const {
    return std::bit_cast<std::uint32_t>(value);
  }
  template <class T>
  QovUtil::AttributeValue operator()(const T& value) const {
    return value;
  }
};

bool IsSameValue(const QovUtil::AttributeValue& left, const QovUtil::AttributeValue& right) {
  if (left.index() != right.index()) return false;
  if (const auto* number = std::get_if<double>(&left)) {
    return std::bit_cast<std::uint64_t>(*number) ==
           std::bit_cast<std::uint64_t>(std::get<double>(right));
  }
  return std::visit(BitsOf(), left) == std::visit(BitsOf(), right);
}

}  // namespace

bool IsSame(const QovUtil::AttributeMap& left, const QovUtil::AttributeMap& right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](const auto& one, const auto& other) {
                      return one.first == other.first && IsSameValue(one.second, other.second);
                    });
}

}  // namespace Qov::Tools
