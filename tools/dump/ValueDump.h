#pragma once

#include <cstdint>
#include <vector>

#include "Json.h"
#include "Output.h"

namespace Qov::Tools {

/// The elements of one array.
struct Values {
  std::vector<std::uint32_t> mBits;  ///< Of unsigned integers or of floats.
  bool mIntegers = false;
  std::size_t mWidth = 1;  ///< Elements an item, at least 1.

  std::size_t GetNumItems() const { return mBits.size() / mWidth; }
  /// Elements at the end that make no whole item.
  std::size_t GetNumRest() const { return mBits.size() % mWidth; }
};

/// Writes an item a line: its elements with `separator` between them, floats as the shortest
/// numbers that read back as they are.
void WriteLines(const Values& values, char separator, Output& output);
/// As lines, with a heading.
void WriteCsv(const Values& values, Output& output);
/// Closes `document` with the values. Elements that make no whole item become a "rest".
void WriteJson(const Json& document, const Values& values, Output& output);
/// A NumPy file of format 1.0: an array of (items, width), or of (elements,) if some make no
/// whole item.
void WriteNpy(const Values& values, Output& output);

}  // namespace Qov::Tools
