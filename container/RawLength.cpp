#include "RawLength.h"

#include <zlib.h>

#include <iostream>
#include <string>

#include "ContainerFormat.h"
#include "Qov/Jbf/BlockZlibUnCompressor.h"
#include "Qov/Util/Raise.h"

namespace QovJbf {

void CheckRawLength(const char* source, std::uint32_t rawLength, std::uint32_t storedSize) {
  if (storedSize >= kRawLengthSize && rawLength <= GetLargestContent(storedSize - kRawLengthSize)) {
    return;
  }
  Qov::Util::RaiseNotEnoughBytes(source);
}

void ThrowInflateError(const char* source, int zlibResult) {
  if (zlibResult == Z_MEM_ERROR) {
    Qov::Util::RaiseOutOfMemory(source);
  }
  ThrowDamagedBlock(zlibResult);
}

void ThrowDamagedBlock(int zlibResult) {
  std::cerr << "Error " << std::to_string(zlibResult) << " while uncompressing block " << std::endl;
  throw DamagedBlock();
}

}  // namespace QovJbf
