// Writes a model with what other programs stumble over: all kinds of cells in one mesh, values and
// coordinates that are not finite, empty arrays, equal names, and names that mean something
// elsewhere. Usage: write_odd_model FILE

#include <limits>
#include <string>
#include <vector>

#include "support/ModelBuilder.h"

namespace {

using QovRyx::Geometry;
using QovRyx::NumericArray;
using Integers = std::vector<std::uint32_t>;
using Floats = std::vector<float>;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

void Add(Geometry& geometry, const std::string& name, const Floats& values,
         std::uint8_t width = 1) {
  geometry.AppendVariable(Qov::Test::MakeVariable(name, 12, NumericArray::Of(values, width)));
}

void Add(Geometry& geometry, const std::string& name, const Integers& values,
         std::uint8_t width = 1) {
  auto variable = Qov::Test::MakeVariable(name, 13, NumericArray::Of(values, width));
  variable.mKindHighByte = 5;
  geometry.AppendVariable(std::move(variable));
}

void AddMesh(Geometry& geometry, const Floats& points, std::uint8_t width,
             const std::vector<Integers>& cells) {
  Integers connectivity;
  Integers lengths;
  for (const Integers& cell : cells) {
    connectivity.insert(connectivity.end(), cell.begin(), cell.end());
    lengths.push_back(static_cast<std::uint32_t>(cell.size()));
  }
  Add(geometry, "Coordinates", points, width);
  Add(geometry, "Connectivity", connectivity);
  Add(geometry, "Polylength", lengths);
}

/// Two hexahedra with a wedge between them, a pyramid, a tetrahedron, and a line.
void AddSolids(QovRyx::Tree& tree, std::uint32_t parent) {
  auto& geometry = Qov::Test::AddNode<Geometry>(tree, parent, "Solids, \"mixed\"");
  Floats points;
  for (const float x : {0.0F, 1.0F, 2.0F, 3.0F}) {
    for (const float y : {0.0F, 1.0F}) points.insert(points.end(), {x, y, 0, x, y, 1});
  }
  points.insert(points.end(), {0.5F, 0.5F, 2, 1, 2, 0.25F});
  AddMesh(geometry, points, 3,
          {{0, 4, 6, 2, 1, 5, 7, 3},
           {4, 8, 6, 5, 9, 7},
           {8, 12, 14, 10, 9, 13, 15, 11},
           {1, 5, 7, 3, 16},
           {2, 6, 7, 17},
           {8, 10}});
  Add(geometry, "Node Ids", Qov::Test::Count(18, 100));
  Add(geometry, "Element IDs", Integers{9, 8, 7, 6, 5, 4294967295});
  Add(geometry, "Tensor", Qov::Test::Ramp(36, -1), 6);
  Add(geometry, "geo", Integers{1, 2, 3, 4, 5, 4294967295});
  Add(geometry, "Temperature", Qov::Test::Ramp(18, 20));
  Add(geometry, "Temperature", Qov::Test::Ramp(18, 40));
  Add(geometry, "Flow", Qov::Test::Ramp(18, 0), 3);
}

/// Faces in the plane, one of them with a corner that is not finite.
void AddShells(QovRyx::Tree& tree, std::uint32_t parent) {
  auto& geometry = Qov::Test::AddNode<Geometry>(tree, parent, "=1+1");
  AddMesh(geometry, {0, 0, 1, 0, 2, 0, 0, 1, 1, 1, 2, 1, kNan, 2, 1, 3, 2, 3}, 2,
          {{0, 1, 4, 3}, {1, 2, 5}, {1, 2, 5, 4}, {3, 4, 6}, {0, 1, 2, 5, 8, 7, 3}, {}, {8}});
  Add(geometry, "Temperature", Floats{1, -0.0F, 3.4e38F, 1e-45F, kNan, kInfinity, 0.1F, -kNan, 5});
  Add(geometry, "Temperature 2", Qov::Test::Ramp(9, 1));
  Add(geometry, "@x", Qov::Test::Ramp(9, 2));
  Add(geometry, "x", Qov::Test::Ramp(9, 3));
  Add(geometry, "../a/b:c \"d\", e\xFF", Qov::Test::Ramp(9, 4));
  Add(geometry, std::string(100, 'n') + "1", Qov::Test::Ramp(9, 5));
  Add(geometry, std::string(100, 'n') + "2", Qov::Test::Ramp(9, 6));
  Add(geometry, "Pair", Qov::Test::Ramp(18, 7), 2);
  Add(geometry, "Three", Qov::Test::Ramp(3, 8));
  Add(geometry, "Flags", Integers{0, 1, 2, 3, 4, 5, 16777217, 4294967294, 4294967295});
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  QovRyx::Tree tree("OddMaker", "1.0", false);
  auto& empty = Qov::Test::AddNode<Geometry>(tree, QovRyx::NodeTree::kRootId, "");
  AddMesh(empty, {}, 3, {});
  Add(empty, "Nothing", Floats{});
  const auto addGroup = [&](std::uint32_t parent, const std::string& name) {
    const std::uint32_t id = tree.GetNodes().GetNextId();
    Qov::Test::AddNode<QovRyx::Group>(tree, parent, name);
    return id;
  };
  const std::uint32_t top = addGroup(QovRyx::NodeTree::kRootId, "Top");
  AddSolids(tree, addGroup(top, "Top"));
  AddShells(tree, top);
  Qov::Test::SaveTree(tree, argv[1]);
  return 0;
}
