#pragma once

#include <exception>

#include "Qov/Export.h"
#include "Qov/Jbf/BlockTransformation.h"
#include "Qov/Util/FileContext.h"

namespace QovJbf {

/// Decompresses the content of a block that BlockZlibCompressor has compressed. The cursor is at
/// the end then.
///
/// A damaged stream writes "Error CODE while uncompressing block " to standard error and throws
/// DamagedBlock. A stored length that is larger than the compressed bytes can hold raises
/// OutOfBounds before memory is allocated.
class QOV_EXPORT BlockZlibUnCompressor : public BlockTransformation {
 public:
  void operator()(Block& block) override;
};

/// The error of a zlib stream that cannot be decompressed.
class QOV_EXPORT DamagedBlock : public std::exception, public Qov::Util::FileContext {
 public:
  const char* what() const noexcept override;
};

}  // namespace QovJbf
