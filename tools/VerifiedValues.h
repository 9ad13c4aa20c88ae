#pragma once

#include <vector>

#include "Qov/Ryx/NumericArray.h"
#include "StoredValues.h"

namespace Qov::Tools {

/// Replaces `values` by those of the array. Verifies their checksums, as NumericArray::GetValues
/// does, and also their place in the file, so that only stored values are shown. Raises the errors
/// of NumericArray::GetValues.
template <class T>
void ReadVerifiedValues(const QovRyx::NumericArray& array, std::vector<T>& values) {
  if (array.GetLoader()) array.GetLoader()->VerifyPlace();
  array.GetValues(values);
}
inline void ReadVerifiedValues(const QovRyx::NumericArray& array, StoredValues& values) {
  if (array.GetLoader()) array.GetLoader()->VerifyPlace();
  values.Read(array);
}

}  // namespace Qov::Tools
