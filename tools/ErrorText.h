#pragma once

#include <exception>
#include <string>

#include "Terminal.h"

namespace Qov::Tools {

/// One line that says what went wrong, without the report around it.
std::string DescribeError(const std::exception& error, const TextStyle& style);

}  // namespace Qov::Tools
