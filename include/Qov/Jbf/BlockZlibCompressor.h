#pragma once

#include "Qov/Export.h"
#include "Qov/Jbf/BlockTransformation.h"

namespace QovJbf {

/// Makes of a block its compressed form: the u32 length of the content, then a zlib stream.
/// Raises MemoryAllocationError, also when zlib fails; the block is then empty.
class QOV_EXPORT BlockZlibCompressor : public BlockTransformation {
 public:
  explicit BlockZlibCompressor(int level) : mLevel(level) {}
  void operator()(Block& block) override;

 private:
  int mLevel;
};

}  // namespace QovJbf
