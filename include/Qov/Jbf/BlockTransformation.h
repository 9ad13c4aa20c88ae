#pragma once

#include "Qov/Export.h"
#include "Qov/Jbf/Block.h"

namespace QovJbf {

/// An operation that replaces the content of a block.
class QOV_EXPORT BlockTransformation {
 public:
  virtual ~BlockTransformation() = default;
  virtual void operator()(Block& block) = 0;
};

}  // namespace QovJbf
