#pragma once

#include <cstdint>
#include <string_view>

#include "Qov/Jbf/Index.h"

/// What the sources of Index share about how the table lies in a file.
namespace QovJbf {

inline constexpr const char* kIndexSource = "include/Qov/Jbf/Index";

inline constexpr const char* kEmptyBlockName = "\vEmpty Block ";
inline constexpr const char* kIndexBlockName = "\vIndex Block ";

/// Where the root index begins, its length field included.
inline constexpr std::uint64_t kRootPosition = 12;
/// Items that the root index lists.
inline constexpr std::uint64_t kRootItems = 20;
/// Items that an index block lists, which follow it in the table.
inline constexpr std::uint64_t kBlockItems = 200;

inline bool IsIndexBlock(const IndexItem& item) { return item.mName.starts_with(kIndexBlockName); }
inline bool IsEmptyBlockName(std::string_view name) { return name.starts_with(kEmptyBlockName); }

}  // namespace QovJbf
