#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Qov/Ryx/Tree.h"
#include "mesh/ResultPlacement.h"

namespace Qov::Tools {

/// The name of an item of a result: the id of a node or an element, else a position from 0.
struct ItemName {
  enum class Kind { Node, Element, Point, Cell, Item };

  Kind mKind = Kind::Item;
  std::uint64_t mNumber = 0;
};

/// Returns "node", "element", "point", "cell" or "item".
const char* NameOf(ItemName::Kind kind);
/// Returns "node 4711".
std::string ItemText(const ItemName& name);

/// Names the items of the results of a model.
class ItemNames {
 public:
  explicit ItemNames(const QovRyx::NodeTree& nodes) : mPlacements(nodes) {}

  /// Returns the node or element id of an item of a result of the geometry. Returns its position
  /// among the points, cells or items if there is no id. Reads the ids when they are needed first.
  ItemName Find(const QovRyx::Geometry& geometry, const QovRyx::Geometry::VarStruct& result,
                std::uint64_t position);

  /// Returns why ids could not be read, not escaped; empty if all could.
  const std::string& GetTrouble() const { return mTrouble; }

 private:
  /// Ids that were read before.
  struct Ids {
    const QovRyx::DataLoader* mpLoader = nullptr;
    std::vector<std::uint32_t> mValues;
  };

  const std::vector<std::uint32_t>& Load(const QovRyx::NumericArray& array, Ids& ids);

  QovMesh::PlacementRule mPlacements;
  Ids mNodeIds;
  Ids mElementIds;
  std::string mTrouble;
};

}  // namespace Qov::Tools
