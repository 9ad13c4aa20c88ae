#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "export/ExportContent.h"

namespace Qov::Tools {

/// The component of a result to show, from 0; nothing for the length of vectors.
using Component = std::optional<std::size_t>;

/// Reads the value of --component: "x", "y", "z", "magnitude" or a number from 1. Raises
/// InvalidEnumeration for any other word.
Component ParseComponent(const std::string& word);

/// The least and the greatest of some values.
struct ScalarRange {
  float mLeast = std::numeric_limits<float>::infinity();
  float mGreatest = -std::numeric_limits<float>::infinity();

  bool IsEmpty() const { return mLeast > mGreatest; }
  /// Leaves out values that are not finite.
  void Include(float value) {
    if (!std::isfinite(value)) return;
    mLeast = value < mLeast ? value : mLeast;
    mGreatest = value > mGreatest ? value : mGreatest;
  }
  void Include(std::span<const float> values) {
    for (const float value : values) Include(value);
  }
  /// Returns the position of a finite value, 0 for the least and 1 for the greatest. If all values
  /// differ by rounding only, they are in the middle.
  double FindShare(float value) const;
};

/// One number of a result for each point or cell of a part. No numbers if the part lacks the
/// result.
struct ResultScalars {
  QovMesh::Placement mPlacement = QovMesh::Placement::Field;
  std::vector<float> mValues;

  /// Returns the value of a whole triangle or line: that of its cell, or NaN if a corner has no
  /// finite value. Returns nothing if each corner has its own value, or if there are no values.
  std::optional<float> FindShapeValue(std::span<const std::uint32_t> corners,
                                      std::uint32_t cell) const;
};

/// Returns the point or cell data of that name (ExportResult::mName); null if there are none.
const ExportResult* FindPlacedResult(const ExportPart& part, std::string_view name);

/// Reads a result, which may be null. Lengths are rounded once. Raises ElementNotFound if it has no
/// such component, and the errors of LoadValues.
ResultScalars LoadScalars(const ExportPart& part, const ExportResult* result,
                          const Component& component);

/// Raises ElementNotFound for a result that no part has at points or cells, and suggests a similar
/// name. `list` is the command that shows the names.
[[noreturn]] void RaiseUnknownResult(const ExportContent& content, const std::string& name,
                                     const std::string& list);

/// Adds a note if some of the parts lack the result.
void NoteUncoloured(const ExportContent& content, const std::string& name,
                    std::vector<std::string>& notes);

}  // namespace Qov::Tools
