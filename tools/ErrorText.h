#pragma once

#include <exception>
#include <string>

#include "Terminal.h"

namespace Qov::Tools {

/// Returns the message of an error as one line, without the report around it. Names are not
/// escaped.
std::string ErrorText(const std::exception& error);
/// Returns the same without the path at the beginning.
std::string FileErrorText(const std::string& path, const std::exception& error);
/// Returns the ErrorText, escaped.
std::string DescribeError(const std::exception& error, const TextStyle& style);

}  // namespace Qov::Tools
