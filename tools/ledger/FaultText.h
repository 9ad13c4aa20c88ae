#pragma once

#include <string>

#include "Faults.h"
#include "Terminal.h"

namespace Qov::Tools {

/// Returns a fault with its place, escaped.
std::string FaultText(const Fault& fault, const TextStyle& style);

}  // namespace Qov::Tools
