#pragma once

#include <string>

#include "Qov/Ryx/NodeSets.h"

namespace Qov::Tools {

/// Returns the difference between the values of two sets, such as "3 and 4 values"; empty if there
/// is none.
std::string DescribeDifference(const QovRyx::SetColumns::View& a,
                               const QovRyx::SetColumns::View& b);

}  // namespace Qov::Tools
