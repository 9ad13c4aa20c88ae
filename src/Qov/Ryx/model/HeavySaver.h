#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "HeavyPass.h"
#include "ReadPlan.h"

namespace QovRyx {

/// Saves the heavy items of a model. Derived classes can leave out arrays that others are equal to.
class HeavySaver {
 public:
  virtual ~HeavySaver() = default;

  /// The largest array, in bytes, that Save reads once; larger ones may be read twice.
  virtual std::uint64_t GetLargestReadOnce() const = 0;
  /// Saves the items, usually in this order. May make results of `nodes` links to others instead.
  /// Called again, with the results that are not linked then, if memory was short.
  virtual void Save(NodeTree& nodes, const std::vector<HeavyItem>& items, HeavyPass& pass) = 0;
};

/// Saves one item after the other.
class SaveAll : public HeavySaver {
 public:
  std::uint64_t GetLargestReadOnce() const override {
    return std::numeric_limits<std::uint64_t>::max();
  }
  void Save(NodeTree&, const std::vector<HeavyItem>& items, HeavyPass& pass) override {
    for (const HeavyItem& item : items) pass.Save(item);
  }
};

}  // namespace QovRyx
