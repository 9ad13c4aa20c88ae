#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Json.h"
#include "SafeOutput.h"
#include "export/SpilledBytes.h"

namespace Qov::Tools {

/// A coded array, compressed.
struct PageBuffer {
  /// Compresses the bytes. Raises MemoryAllocationError.
  PageBuffer(std::size_t count, const char* coding, const std::string& bytes);

  std::size_t mCount = 0;    ///< Values of the array.
  const char* mCoding = "";  ///< Its coding, for the script of the page.
  std::string mCompressed;   ///< A zlib stream.
};

/// A member of the manifest of a page, with the arrays that it refers to.
struct PageItem {
  Json mJson;
  /// Members of mJson; nothing for an array that the item does not have.
  std::vector<std::pair<const char*, std::optional<PageBuffer>>> mBuffers;
};

/// The arrays of a page as script elements. They wait in a temporary file, because the manifest
/// comes before them. Equal arrays are stored once.
class PageBuffers {
 public:
  /// `budget` is the greatest size of all arrays and items together, in bytes.
  PageBuffers(const SafeOutput& output, std::uint64_t budget) : mBytes(output), mBudget(budget) {}

  /// Adds an item. Returns what the manifest has about it; null if the page would get too large.
  /// Raises WriteError.
  Json Add(PageItem item);
  /// Takes bytes of the manifest from the budget, which may become overdrawn.
  void Spend(std::uint64_t size) { mSpent += size; }
  bool IsOverdrawn() const { return mSpent > mBudget; }
  void CopyTo(SafeOutput& output) { mBytes.CopyTo(output); }

 private:
  using Hash = std::pair<std::uint64_t, std::uint64_t>;

  std::size_t Write(const PageBuffer& buffer);

  SpilledBytes mBytes;
  std::uint64_t mBudget;
  std::uint64_t mSpent = 0;
  std::map<Hash, std::size_t> mNumbers;  ///< By hash of the compressed bytes.
};

/// Returns the bytes in base64.
std::string Base64(const std::string& bytes);

}  // namespace Qov::Tools
