#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "export/ExportContent.h"
#include "html/PageBuffers.h"

namespace Qov::Tools {

/// The values of a result at chosen points or cells, component after component.
struct PageValues {
  /// Reads the result. `positions` are those of the chosen items in the file. Raises the errors of
  /// LoadValues.
  PageValues(const ExportResult& result, std::span<const std::uint32_t> positions);

  /// Replaces the values by those of `other` minus them. Both have the same size.
  void SubtractFrom(const PageValues& other);
  /// Returns the items with the greatest absolute values, or lengths of vectors, that are not 0;
  /// at most `count`, in descending order. Values keep their sign.
  std::vector<std::pair<std::size_t, float>> FindGreatest(std::size_t count) const;

  std::size_t mNumItems = 0;
  std::size_t mWidth = 1;
  std::vector<float> mValues;
  std::uint64_t mNumRounded = 0;  ///< Integers that a float cannot represent.
};

/// Returns the values for the manifest, as numbers of 16 bits with their ranges.
PageItem MakeFieldItem(const PageValues& values);

/// Returns the exact values.
PageBuffer CodeExactValues(const PageValues& values);

}  // namespace Qov::Tools
