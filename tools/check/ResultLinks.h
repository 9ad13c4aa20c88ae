#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "check/ModelContent.h"

namespace Qov::Tools {

/// Follows the links of a model's results to the variables whose values they take. Each variable
/// is visited once, however many links lead over it.
class ResultLinks {
 public:
  enum class End { Found, Nowhere, Circle, Unknown };
  struct Target {
    End mEnd = End::Unknown;
    const StoredNode* mNode = nullptr;  ///< With mVariable, if it was found.
    const StoredVariable* mVariable = nullptr;
  };

  explicit ResultLinks(const ModelContent& model) : mModel(model) {}

  /// Where the variable's values are; its own place if it is not linked.
  Target Resolve(const StoredNode& node, const StoredVariable& variable);

  /// Reports the links that lead nowhere or round in a circle.
  void Check(Findings& findings);

 private:
  Target Step(const StoredVariable& variable) const;

  const ModelContent& mModel;
  std::unordered_map<const StoredVariable*, Target> mKnown;
};

}  // namespace Qov::Tools
