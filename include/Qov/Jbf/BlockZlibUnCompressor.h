#pragma once

#include <exception>

#include "Qov/Export.h"
#include "Qov/Jbf/BlockTransformation.h"
#include "Qov/Util/FileContext.h"

namespace QovJbf {

/// Restores what BlockZlibCompressor made; the cursor ends behind the content.
///
/// A damaged stream writes "Error CODE while uncompressing block " to standard error and throws
/// a DamagedBlock. No more memory is taken than zlib's largest ratio allows for the compressed
/// bytes, whatever the length in front of them says.
class QOV_EXPORT BlockZlibUnCompressor : public BlockTransformation {
 public:
  void operator()(Block& block) override;
};

/// What a zlib stream that cannot be inflated is reported as.
class QOV_EXPORT DamagedBlock : public std::exception, public Qov::Util::FileContext {
 public:
  const char* what() const noexcept override;
};

}  // namespace QovJbf
