#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace Qov::Tools {

/// Finds things of A in B by their names; those of one name are matched in order.
class NameMatching {
 public:
  template <class List>
  explicit NameMatching(const List& listOfB) {
    for (const auto& thing : listOfB) Add(thing.mName);
  }
  NameMatching() = default;
  /// Adds the next item of B.
  void Add(std::string_view name) { mLeft.emplace(name, mLeft.size()); }

  /// The position in B of what the next thing of A is matched with, if there is any.
  std::optional<std::size_t> Take(const std::string& name) {
    const auto found = mLeft.lower_bound(name);
    if (found == mLeft.end() || found->first != name) return std::nullopt;
    const std::size_t position = found->second;
    mLeft.erase(found);
    mIsInOrder = mIsInOrder && position >= mNext;
    mNext = position;
    return position;
  }
  /// What nothing was matched with, by name.
  const std::multimap<std::string, std::size_t>& GetLeft() const { return mLeft; }
  /// Whether all that was matched is in B in the order in which it is in A.
  bool IsInOrder() const { return mIsInOrder; }

 private:
  std::multimap<std::string, std::size_t> mLeft;
  std::size_t mNext = 0;
  bool mIsInOrder = true;
};

}  // namespace Qov::Tools
