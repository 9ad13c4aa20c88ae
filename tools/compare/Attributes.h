#pragma once

#include <string>

#include "Qov/Ryx/Attributes.h"

namespace Qov::Tools {

/// Returns a line that lists the differences between two maps, to the last bit; empty if there are
/// none. `nameA` and `nameB` name the two sides in it, such as "A" and "B".
std::string DescribeDifference(const QovUtil::Attributes& a, const QovUtil::Attributes& b,
                               const char* nameA, const char* nameB);

}  // namespace Qov::Tools
