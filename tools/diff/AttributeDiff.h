#pragma once

#include <string>

#include "Qov/Util/AttributeValue.h"

namespace Qov::Tools {

/// What differs between two maps, to the last bit, as a line; empty if nothing does.
std::string DiffAttributes(const QovUtil::AttributeMap& a, const QovUtil::AttributeMap& b);

}  // namespace Qov::Tools
