#include "MallocBuffer.h"

#include <malloc.h>

namespace QovJbf {

void ReturnLargeBuffers() {
  constexpr int kLeastLarge = 4 << 20;
  constexpr int kMostKept = 16 << 20;  // free memory for arrays, for each thread
  const bool isSet = ::mallopt(M_MMAP_THRESHOLD, kLeastLarge) == 1;
  ::mallopt(M_TRIM_THRESHOLD, kMostKept);
  if (isSet) gLeastHugeBuffer = kLeastLarge;
}

}  // namespace QovJbf
