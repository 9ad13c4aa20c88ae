#pragma once

#include <exception>
#include <string>
#include <string_view>

#include "Terminal.h"

namespace Qov::Tools {

/// Returns a message of the library with \xNN replaced by the bytes, because the output escapes it
/// again.
std::string RestoreNames(std::string_view text);
/// Returns the message of an error as one line, without the report around it. Names are not
/// escaped.
std::string ErrorText(const std::exception& error);
/// Returns the same without the path at the beginning.
std::string FileErrorText(const std::string& path, const std::exception& error);
/// Returns the ErrorText, escaped.
std::string DescribeError(const std::exception& error, const TextStyle& style);
/// Returns the same after the path of the file that the error concerns, unless the message names it
/// or the path is not known.
std::string DescribeErrorOfFile(const std::exception& error, const TextStyle& style);

}  // namespace Qov::Tools
