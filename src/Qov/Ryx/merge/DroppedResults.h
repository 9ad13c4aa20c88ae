#pragma once

#include <cstdint>

namespace QovRyx {

/// Numbers of results that a merge dropped or whose values it replaced, by rule.
struct DroppedResults {
  std::uint64_t mWithoutInstance = 0;  ///< The name has no instance part.
  std::uint64_t mWithoutGeometry = 0;  ///< The node of that id in the first file is not a geometry.
  std::uint64_t mReplaced = 0;         ///< A shared result of the same name replaced the values.
  /// Results without values, because automatic renaming made their links to links to themselves.
  std::uint64_t mLinkedToThemselves = 0;
  /// Results that share other values than before, because the result that they are linked to was
  /// replaced or lost its values.
  std::uint64_t mLinkReplaced = 0;

  std::uint64_t GetTotal() const {
    return mWithoutInstance + mWithoutGeometry + mReplaced + mLinkedToThemselves + mLinkReplaced;
  }
};

}  // namespace QovRyx
