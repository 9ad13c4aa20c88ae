#pragma once

#include <cstdint>
#include <string>

#include "Qov/Export.h"

/// The limit on what a loaded model holds in memory as a whole: the uncompressed bytes of its tree,
/// light data, attributes and materials; likewise of its views; likewise of its history. A decoded
/// byte takes at most six bytes of memory.
namespace QovJbf {

/// In bytes: what the environment variable RYXMERGE_LOAD_LIMIT says (decimal), else an eighth of
/// the memory that is free, but at least 1 GiB.
QOV_EXPORT std::uint64_t GetLoadLimit();

/// The text of the error for `content` that decompresses to more bytes than that.
QOV_EXPORT std::string DescribeLoadLimit(const std::string& content, std::uint64_t numBytes,
                                         std::uint64_t limit);

}  // namespace QovJbf
