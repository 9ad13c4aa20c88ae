#include "Qov/Jbf/BlockZlibUnCompressor.h"

#include <zlib.h>

#include "ContainerFormat.h"
#include "MallocBuffer.h"
#include "Qov/Jbf/BlockIo.h"
#include "RawLength.h"

namespace QovJbf {

namespace {

constexpr const char* kSource = "include/Qov/Jbf/BlockZlibUnCompressor";

}  // namespace

void BlockZlibUnCompressor::operator()(Block& block) {
  const std::uint32_t storedSize = block.GetSize();
  std::uint32_t rawLength = 0;
  block.SetPosition(0);
  CopyFromBlock(block, rawLength);
  CheckRawLength(kSource, rawLength, storedSize);
  const MallocBuffer input(block.Detach());
  MallocBuffer output = AllocateBuffer(kSource, rawLength);
  uLongf length = rawLength;
  const int result =
      uncompress(output.get(), &length, input.get() + kRawLengthSize, storedSize - kRawLengthSize);
  if (result != Z_OK) ThrowInflateError(kSource, result);
  block.Attach(output.release(), rawLength, static_cast<std::uint32_t>(length));
}

const char* DamagedBlock::what() const noexcept { return "Damaged compressed block"; }

}  // namespace QovJbf
