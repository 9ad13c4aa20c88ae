#pragma once

#include <string>
#include <vector>

namespace Qov::Tools {

/// Reads paths from a file, or from standard input if `path` is "-". Each path ends with
/// `separator`, except that the last one may end with the file. Empty entries are skipped, and a CR
/// at the end of a line is left out. Raises ReadError if the file cannot be read,
/// FormatNotSupported for an entry that cannot be a path, and ZeroLength if there are no paths.
std::vector<std::string> ReadInputList(const std::string& path, char separator);

}  // namespace Qov::Tools
