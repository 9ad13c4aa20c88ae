#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "Qov/Export.h"
#include "Qov/Ryx/Node.h"

namespace QovRyx {

/// A node that groups other nodes.
class QOV_EXPORT Group : public Node {
 public:
  static constexpr const char* kType = "Group";
  static constexpr const char* kVersion = "0.4";

  using Node::Node;
  std::string GetType() const override { return kType; }
  std::string GetVersion() const override { return kVersion; }

  /// Returns true for the root group of a model if Tree::Load and Tree::Merge add the nodes of
  /// further files below it.
  bool TakesModels() const { return mTakesModels != 0; }

  /// Placement of the content of the group. Carried without being used.
  std::array<float, 3> mTranslation{0.0F, 0.0F, 0.0F};
  std::array<float, 4> mRotation{0.0F, 0.0F, 1.0F, 0.0F};
  std::array<float, 3> mScale{1.0F, 1.0F, 1.0F};
  QovUtil::Attributes mAttributes;
  /// Any value except 0 means true. Written as it was read.
  std::uint8_t mTakesModels = 0;
};

}  // namespace QovRyx
