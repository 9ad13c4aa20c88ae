#pragma once

#include <utility>
#include <vector>

#include "Qov/Ryx/Geometry.h"

namespace QovRyx {

/// Links to be replaced by the values that they share. All of them are resolved before any is
/// changed, because a chain may lead over results that change too.
class LinkCuts {
 public:
  /// Adds a linked result and the one that its link names in the end, or null if there is none.
  /// Both must stay where they are until Apply.
  void Add(Geometry::VarStruct& result, const Geometry::VarStruct* owner) {
    mCuts.emplace_back(&result, owner);
  }

  /// Gives each result the values of the one that its link named in the end. A result whose chain
  /// of links breaks off or is a circle gets no values.
  void Apply() {
    for (const auto& [result, owner] : mCuts) {
      result->TakeValuesOf(owner == nullptr ? Geometry::VarStruct() : *owner);
    }
  }

 private:
  std::vector<std::pair<Geometry::VarStruct*, const Geometry::VarStruct*>> mCuts;
};

}  // namespace QovRyx
