#pragma once

#include <vector>

#include "Qov/Ryx/NumericArray.h"

namespace Qov::Tools {

/// Replaces `values` by those of the array. Returns only after their checksums are verified, as
/// NumericArray::GetValues does, and also their place in the file, so that a value that was not
/// stored is never shown. Raises the errors of NumericArray::GetValues.
template <class T>
void GetSureValues(const QovRyx::NumericArray& array, std::vector<T>& values) {
  if (array.GetLoader()) array.GetLoader()->VerifyPlace();
  array.GetValues(values);
}

}  // namespace Qov::Tools
