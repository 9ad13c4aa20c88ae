#pragma once

#include "Qov/Util/AttributeValue.h"

namespace Qov::Tools {

/// Bit for bit, unlike ==, for which NaN differs from itself.
bool IsSame(const QovUtil::AttributeMap& left, const QovUtil::AttributeMap& right);

}  // namespace Qov::Tools
