#include "compare/Attributes.h"

#include <fmt/format.h>

#include <cstring>
#include <string_view>
#include <type_traits>
#include <variant>

#include "Plural.h"

namespace Qov::Tools {
namespace {

using QovUtil::Attributes;
using QovUtil::AttributeValue;

bool AreSame(const AttributeValue& a, const AttributeValue& b) {
  if (a.index() != b.index()) return false;
  return std::visit(
      [&b](const auto& value) {
        using T = std::remove_cvref_t<decltype(value)>;
        const T& other = std::get<T>(b);
        if constexpr (std::is_floating_point_v<T>) {
          // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): compares the bits of floats
          return std::memcmp(&value, &other, sizeof value) == 0;
        } else {
          return value == other;
        }
      },
      a);
}

class AttributeText {
 public:
  void Add(std::string_view name, std::string_view what) {
    constexpr std::size_t kMost = 8;
    if (++mNumDiffering > kMost) return;
    mText += fmt::format("{}{} {}", mText.empty() ? "" : ", ", name, what);
  }
  std::string Get() const {
    if (mNumDiffering == 0) return "";
    return fmt::format("{}: {}", Plural(mNumDiffering, "attribute", "differ"), mText);
  }

 private:
  std::string mText;
  std::size_t mNumDiffering = 0;
};

}  // namespace

std::string DescribeDifference(const Attributes& a, const Attributes& b, const char* nameA,
                               const char* nameB) {
  AttributeText text;
  if (a == b) return "";
  auto inA = a.begin();
  auto inB = b.begin();
  while (inA != a.end() || inB != b.end()) {
    const bool isOnlyInA = inB == b.end() || (inA != a.end() && inA.GetName() < inB.GetName());
    const bool isOnlyInB = inA == a.end() || (inB != b.end() && inB.GetName() < inA.GetName());
    const std::string_view name = isOnlyInB ? inB.GetName() : inA.GetName();
    if (isOnlyInA || isOnlyInB) {
      text.Add(name, fmt::format("(only in {})", isOnlyInA ? nameA : nameB));
    } else if (inA.GetValue().index() != inB.GetValue().index()) {
      text.Add(name, "(type)");
    } else if (!AreSame(inA.GetValue(), inB.GetValue())) {
      text.Add(name, "(value)");
    }
    if (!isOnlyInB) ++inA;
    if (!isOnlyInA) ++inB;
  }
  return text.Get();
}

}  // namespace Qov::Tools
