#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "Qov/Export.h"
#include "Qov/Ryx/Node.h"

namespace QovRyx {

/// A node that holds others together.
class QOV_EXPORT Group : public Node {
 public:
  using Node::Node;
  std::string GetType() const override { return "Group"; }
  std::string GetVersion() const override { return "0.4"; }

  /// The root group of a model that takes other models in beneath it.
  bool TakesModels() const { return mTakesModels != 0; }

  /// Placement of what the group holds; only carried.
  std::array<float, 3> mTranslation{0.0F, 0.0F, 0.0F};
  std::array<float, 4> mRotation{0.0F, 0.0F, 1.0F, 0.0F};
  std::array<float, 3> mScale{1.0F, 1.0F, 1.0F};
  QovUtil::Attributes mAttributes;
  /// Any other value than 0 means true; kept as it was read.
  std::uint8_t mTakesModels = 0;
};

}  // namespace QovRyx
