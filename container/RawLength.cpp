#include "RawLength.h"

#include <zlib.h>

#include <iostream>
#include <string>

#include "Qov/Jbf/BlockZlibUnCompressor.h"
#include "Qov/Util/Raise.h"

namespace QovJbf {

namespace {

// Deflate makes at most 258 bytes of two bits; the rest is for the ends of a very short stream.
constexpr std::uint64_t kLargestRatio = 1032;
constexpr std::uint64_t kSlack = 64;

}  // namespace

void CheckRawLength(const char* source, std::uint32_t rawLength, std::uint32_t storedSize) {
  if (storedSize >= kRawLengthSize &&
      rawLength <= (storedSize - kRawLengthSize) * kLargestRatio + kSlack) {
    return;
  }
  Qov::Util::Raise(source, Qov::Util::Exception::ErrorType::OutOfBounds,
                   "Not enough bytes in the block");
}

void ThrowInflateError(const char* source, int zlibResult) {
  if (zlibResult == Z_MEM_ERROR) {
    Qov::Util::Raise(source, Qov::Util::Exception::ErrorType::MemoryAllocationError);
  }
  ThrowDamagedBlock(zlibResult);
}

void ThrowDamagedBlock(int zlibResult) {
  std::cerr << "Error " << std::to_string(zlibResult) << " while uncompressing block " << std::endl;
  throw DamagedBlock();
}

}  // namespace QovJbf
