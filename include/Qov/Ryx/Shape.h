#pragma once

#include <string>

#include "Qov/Export.h"
#include "Qov/Ryx/MaterialValues.h"
#include "Qov/Ryx/Node.h"

namespace QovRyx {

/// How a shape's surface looks. Not a node of the tree: it lives inside its shape.
class QOV_EXPORT Material : public Node {
 public:
  using Node::Node;
  std::string GetType() const override { return "Material"; }
  std::string GetVersion() const override { return getVersion(); }
  virtual std::string getVersion() const { return MaterialValues::kTag; }

  MaterialValues mValues;
};

/// A node that gives the geometry beneath it a material.
class QOV_EXPORT Shape : public Node {
 public:
  using Node::Node;
  std::string GetType() const override { return "Shape"; }
  std::string GetVersion() const override { return "0.2"; }

  Material mMaterial{""};
};

}  // namespace QovRyx
