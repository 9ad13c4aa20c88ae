#include "TimeAttribute.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <string>
#include <system_error>
#include <variant>
#include <vector>

namespace QovRyx {
namespace {

constexpr std::size_t kMostTextBytes = 64;

std::optional<double> ReadNumber(const std::string& text) {
  double number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  const bool isNumber = error == std::errc() && stop == end && text.size() <= kMostTextBytes;
  return isNumber ? std::optional(number) : std::nullopt;
}

struct NumberOf {
  std::optional<double> operator()(const std::string& text) const { return ReadNumber(text); }
  std::optional<double> operator()(std::uint32_t number) const { return number; }
  std::optional<double> operator()(float number) const { return static_cast<double>(number); }
  std::optional<double> operator()(double number) const { return number; }
};

}  // namespace

std::optional<double> GetTime(const QovUtil::Attributes& attributes) {
  const std::optional<QovUtil::AttributeValue> value = GetTimeValue(attributes);
  const std::optional<double> time = value ? std::visit(NumberOf(), *value) : std::nullopt;
  return time && std::isfinite(*time) ? time : std::nullopt;
}

std::optional<QovUtil::AttributeValue> GetTimeValue(const QovUtil::Attributes& attributes) {
  for (auto entry = attributes.begin(); entry != attributes.end(); ++entry) {
    if (entry.GetName() == kTimeAttribute) return entry.GetValue();
  }
  return std::nullopt;
}

bool AreEqualButForTime(const QovUtil::Attributes& a, const QovUtil::Attributes& b) {
  const auto withoutTime = [](QovUtil::Attributes attributes) {
    if (GetTime(attributes)) attributes.erase(kTimeAttribute);
    return attributes;
  };
  return withoutTime(a) == withoutTime(b);
}

const Group* GroupTimes::Find(std::uint32_t id) {
  std::vector<std::uint32_t> path;
  const Group* found = nullptr;
  for (const auto* entry = mNodes.FindNode(id); entry != nullptr && found == nullptr;
       entry = mNodes.FindNode(entry->mParent)) {
    const auto [place, isNew] = mFound.try_emplace(entry->mId, nullptr);
    if (!isNew) {  // known, or the parents of a damaged tree form a cycle
      found = place->second;
      break;
    }
    path.push_back(entry->mId);
    const auto* group = dynamic_cast<const Group*>(entry->mData.get());
    if (group != nullptr && GetTime(group->mAttributes)) found = group;
  }
  for (const std::uint32_t node : path) mFound[node] = found;
  return found;
}

}  // namespace QovRyx
