#pragma once

#include "Qov/Export.h"
#include "Qov/Jbf/BlockTransformation.h"

namespace QovJbf {

/// Replaces the content of a block with its compressed form: the length of the content (u32) and a
/// zlib stream. Raises MemoryAllocationError if there is no memory or if zlib fails. The block is
/// empty then.
class QOV_EXPORT BlockZlibCompressor : public BlockTransformation {
 public:
  explicit BlockZlibCompressor(int level) : mLevel(level) {}
  void operator()(Block& block) override;

 private:
  int mLevel;
};

}  // namespace QovJbf
