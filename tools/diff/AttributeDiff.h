#pragma once

#include <string>

#include "Qov/Ryx/Attributes.h"

namespace Qov::Tools {

/// What differs between two maps, to the last bit, as a line; empty if nothing does.
std::string DiffAttributes(const QovUtil::Attributes& a, const QovUtil::Attributes& b);

}  // namespace Qov::Tools
