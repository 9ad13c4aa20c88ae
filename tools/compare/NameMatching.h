#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string_view>

namespace Qov::Tools {

/// Matches the items of list A with those of list B by name. Items of the same name are matched
/// in order. The names of B must exist as long as this object.
class NameMatching {
 public:
  template <class List>
  explicit NameMatching(const List& listOfB) {
    for (const auto& item : listOfB) Add(item.mName);
  }
  NameMatching() = default;
  /// Adds the next item of B.
  void Add(std::string_view name) { mLeft.emplace(name, mLeft.size()); }

  /// Matches the next item of A. Returns the position of its match in B, if there is one.
  std::optional<std::size_t> Take(std::string_view name) {
    const auto found = mLeft.lower_bound(name);
    if (found == mLeft.end() || found->first != name) return std::nullopt;
    const std::size_t position = found->second;
    mLeft.erase(found);
    mIsInOrder = mIsInOrder && position >= mNext;
    mNext = position;
    return position;
  }
  /// Returns the items of B without a match, by name.
  const std::multimap<std::string_view, std::size_t>& GetLeft() const { return mLeft; }
  /// Returns true if all matched items have the same order in A and B.
  bool IsInOrder() const { return mIsInOrder; }

 private:
  std::multimap<std::string_view, std::size_t> mLeft;
  std::size_t mNext = 0;
  bool mIsInOrder = true;
};

}  // namespace Qov::Tools
