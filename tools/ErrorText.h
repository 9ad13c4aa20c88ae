#pragma once

#include <exception>
#include <string>

#include "Terminal.h"

namespace Qov::Tools {

/// One line that says what went wrong, without the report around it. Names in it are not escaped.
std::string ErrorText(const std::exception& error);
/// The same of a file, in a line that need not begin with its path.
std::string FileErrorText(const std::string& path, const std::exception& error);
/// An ErrorText that is fit to be shown.
std::string DescribeError(const std::exception& error, const TextStyle& style);

}  // namespace Qov::Tools
