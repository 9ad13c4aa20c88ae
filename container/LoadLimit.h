#pragma once

#include <cstdint>
#include <string>

/// The limit on the data that a loaded model holds in memory. It applies to the uncompressed bytes
/// of three parts separately: tree, light data, attributes and materials together; the views; the
/// history. A decoded byte takes at most six bytes of memory.
namespace QovJbf {

/// Returns the limit in bytes: the value of the environment variable RYXMERGE_LOAD_LIMIT (decimal),
/// else an eighth of the free memory, but at least 1 GiB.
std::uint64_t GetLoadLimit();

/// Returns the error message that `content` decompresses to more bytes than the limit.
std::string DescribeLoadLimit(const std::string& content, std::uint64_t numBytes,
                              std::uint64_t limit);

}  // namespace QovJbf
