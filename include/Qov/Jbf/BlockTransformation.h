#pragma once

#include "Qov/Export.h"
#include "Qov/Jbf/Block.h"

namespace QovJbf {

/// Replaces a block's content in place.
class QOV_EXPORT BlockTransformation {
 public:
  virtual ~BlockTransformation() = default;
  virtual void operator()(Block& block) = 0;
};

}  // namespace QovJbf
