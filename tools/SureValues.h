#pragma once

#include <vector>

#include "Qov/Ryx/NumericArray.h"

namespace Qov::Tools {

/// Replaces `values` by those of the array. Returns only after their checksums and, in addition to
/// what NumericArray::GetValues does, their place in the file were verified, so that a value that
/// was not stored is never shown. Raises what NumericArray::GetValues raises.
template <class T>
void GetSureValues(const QovRyx::NumericArray& array, std::vector<T>& values) {
  if (array.GetLoader()) array.GetLoader()->VerifyPlace();
  array.GetValues(values);
}

}  // namespace Qov::Tools
