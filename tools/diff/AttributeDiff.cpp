#include "diff/AttributeDiff.h"

#include <fmt/format.h>

#include <cstring>
#include <type_traits>
#include <variant>

namespace Qov::Tools {
namespace {

using QovUtil::AttributeMap;
using QovUtil::AttributeValue;

bool AreSame(const AttributeValue& a, const AttributeValue& b) {
  if (a.index() != b.index()) return false;
  return std::visit(
      [&b](const auto& value) {
        using T = std::remove_cvref_t<decltype(value)>;
        const T& other = std::get<T>(b);
        if constexpr (std::is_floating_point_v<T>) {
          // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): the bits are meant
          return std::memcmp(&value, &other, sizeof value) == 0;
        } else {
          return value == other;
        }
      },
      a);
}

class AttributeText {
 public:
  void Add(const std::string& name, const char* what) {
    constexpr std::size_t kMost = 8;
    if (++mNumDiffering > kMost) return;
    mText += fmt::format("{}{} {}", mText.empty() ? "" : ", ", name, what);
  }
  std::string Get() const {
    if (mNumDiffering == 0) return "";
    return fmt::format("{} attribute{} {}: {}", mNumDiffering, mNumDiffering == 1 ? "" : "s",
                       mNumDiffering == 1 ? "differs" : "differ", mText);
  }

 private:
  std::string mText;
  std::size_t mNumDiffering = 0;
};

}  // namespace

std::string DiffAttributes(const AttributeMap& a, const AttributeMap& b) {
  AttributeText text;
  for (const auto& [name, value] : a) {
    const auto inB = b.find(name);
    if (inB == b.end()) {
      text.Add(name, "(only in A)");
    } else if (value.index() != inB->second.index()) {
      text.Add(name, "(its type)");
    } else if (!AreSame(value, inB->second)) {
      text.Add(name, "(its value)");
    }
  }
  for (const auto& [name, value] : b) {
    if (!a.contains(name)) text.Add(name, "(only in B)");
  }
  return text.Get();
}

}  // namespace Qov::Tools
