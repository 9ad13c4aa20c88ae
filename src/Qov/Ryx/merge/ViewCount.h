#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace QovRyx {

/// The numbers of views in one file.
struct ViewCount {
  std::uint64_t mCurrentViews = 0;  ///< 0 or 1. A file with a current view has a sequencer too.
  std::uint64_t mPaths = 0;
  std::uint64_t mViewPoints = 0;  ///< In the paths.
};

/// Counts the views of a model file without decoding them. Returns nothing if they cannot be
/// counted quickly: if they are damaged, if their records have no sizes (container versions below
/// 0.3), or if they take more than 64 MiB. Raises no errors.
std::optional<ViewCount> CountViews(const std::string& path) noexcept;

}  // namespace QovRyx
