#pragma once

#include <string>

#include "Qov/Export.h"
#include "Qov/Ryx/MaterialValues.h"
#include "Qov/Ryx/Node.h"

namespace QovRyx {

/// The appearance of the surface of a shape. A member of its shape, not an entry of the tree.
class QOV_EXPORT Material : public Node {
 public:
  using Node::Node;
  std::string GetType() const override { return "Material"; }
  std::string GetVersion() const override { return getVersion(); }
  virtual std::string getVersion() const { return MaterialValues::kTag; }

  MaterialValues mValues;
};

/// A node that gives a material to the geometry below it.
class QOV_EXPORT Shape : public Node {
 public:
  static constexpr const char* kType = "Shape";
  static constexpr const char* kVersion = "0.2";

  using Node::Node;
  std::string GetType() const override { return kType; }
  std::string GetVersion() const override { return kVersion; }

  Material mMaterial{""};
};

}  // namespace QovRyx
