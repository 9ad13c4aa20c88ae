#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Json.h"

namespace Qov::Tools {

/// A table of a page. It keeps the first rows and counts all.
class PageTable {
 public:
  static constexpr std::size_t kMostRows = 5000;

  PageTable(const char* title, std::vector<const char*> columns);

  /// Adds a row of escaped texts.
  void Add(std::vector<std::string> cells);
  /// Appends the table to those of a manifest, unless it is empty. Notes rows that are left out.
  void AppendTo(Json& tables, std::vector<std::string>& notes);

 private:
  const char* mTitle;
  std::vector<const char*> mColumns;
  std::vector<std::vector<std::string>> mRows;
  std::uint64_t mCount = 0;
};

}  // namespace Qov::Tools
