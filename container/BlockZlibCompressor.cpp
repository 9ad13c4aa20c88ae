#include "Qov/Jbf/BlockZlibCompressor.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>

#include "ContainerFormat.h"
#include "MallocBuffer.h"
#include "Sources.h"

namespace QovJbf {

using Qov::Util::RaiseOutOfMemory;

namespace {

// Returns 1.2 times the length, or zlib's bound for a short block, where that is larger.
std::uint64_t GetOutputSize(std::uint32_t rawLength) {
  const auto estimate = static_cast<std::uint64_t>(static_cast<float>(rawLength) * 1.2F) + 12;
  return std::max<std::uint64_t>(estimate, compressBound(rawLength));
}

}  // namespace

void BlockZlibCompressor::operator()(Block& block) {
  const std::uint32_t rawLength = block.GetSize();
  const MallocBuffer input(block.Detach());
  uLongf length = GetOutputSize(rawLength);
  const std::uint64_t capacity = kRawLengthSize + length;
  MallocBuffer output = AllocateBuffer(kCompressorSource, capacity);
  std::memcpy(output.get(), &rawLength, kRawLengthSize);
  const int result =
      compress2(output.get() + kRawLengthSize, &length, input.get(), rawLength, mLevel);
  if (result != Z_OK || length > kLargestBlock - kRawLengthSize) {
    RaiseOutOfMemory(kCompressorSource);
  }
  block.Attach(output.release(), capacity, static_cast<std::uint32_t>(kRawLengthSize + length));
}

}  // namespace QovJbf
