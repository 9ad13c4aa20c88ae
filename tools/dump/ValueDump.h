#pragma once

#include <cstdint>
#include <vector>

#include "Json.h"
#include "Output.h"

namespace Qov::Tools {

/// The elements of one array.
struct Values {
  std::vector<std::uint32_t> mBits;  ///< Bits of unsigned integers or of floats.
  bool mIntegers = false;
  std::size_t mWidth = 1;  ///< Elements per item, at least 1.

  std::size_t GetNumItems() const { return mBits.size() / mWidth; }
  /// Returns the number of elements after the last whole item.
  std::size_t GetNumRest() const { return mBits.size() % mWidth; }
};

/// Writes one item per line, with `separator` between its elements. Floats are the shortest numbers
/// that read back unchanged.
void WriteLines(const Values& values, char separator, Output& output);
/// Writes lines below a heading.
void WriteCsv(const Values& values, Output& output);
/// Writes `document` with the values as last member. Elements after the last whole item become the
/// member "rest".
void WriteJson(const Json& document, const Values& values, Output& output);
/// Writes a NumPy file of format 1.0: an array of shape (items, width), or (elements,) if elements
/// follow the last whole item.
void WriteNpy(const Values& values, Output& output);

}  // namespace Qov::Tools
