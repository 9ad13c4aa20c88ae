#include <array>
#include <filesystem>

#include "ryxFixture.h"
#include "support/Files.h"

namespace Qov::Test {
namespace {

using namespace QovRyx;
using Integers = std::vector<std::uint32_t>;

void AddArray(Geometry& geometry, const std::string& name, std::uint32_t kind,
              const Integers& values) {
  geometry.AppendVariable(MakeVariable(name, kind, NumericArray::Of(values)));
}

void AddResult(Geometry& geometry, const std::string& name, std::size_t count,
               std::uint8_t width = 1) {
  geometry.AppendVariable(MakeVariable(name, 12, NumericArray::Of(Ramp(count * width, 1), width)));
}

Geometry& AddGeometry(Tree& tree, std::uint32_t group, const std::string& name,
                      const Integers& connectivity, const Integers& lengths) {
  auto& geometry = AddNode<Geometry>(tree, group, name);
  std::vector<float> points;
  for (const float z : {0.0F, 1.0F, 2.0F}) {
    for (const auto& [x, y] :
         std::array<std::pair<float, float>, 4>{{{0, 0}, {1, 0}, {1, 1}, {0, 1}}}) {
      points.insert(points.end(), {x, y, z});
    }
  }
  geometry.AppendVariable(MakeVariable("Coordinates", 0, NumericArray::Of(points, 3)));
  AddArray(geometry, "Connectivity", 4, connectivity);
  AddArray(geometry, "Polylength", 5, lengths);
  return geometry;
}

/// Two cubes with results of two steps, ropes of lines, and a geometry whose cells are damaged.
void BuildTower(Tree& tree) {
  AddNode<Group>(tree, NodeTree::kRootId, "Tower").mAttributes["builder"] = std::string("me");
  const std::uint32_t group = tree.GetNodes().GetCurrentId();
  auto& body =
      AddGeometry(tree, group, "Body", {0, 1, 2, 3, 4, 5, 6, 7, 4, 5, 6, 7, 8, 9, 10, 11}, {8, 8});
  AddArray(body, "Node Ids", 6, Count(12, 101));
  AddResult(body, "Stress|T=1", 12);
  AddResult(body, "Stress|T=2", 12);
  AddResult(body, "Shift|T=2", 12, 3);
  AddResult(body, "Mass", 2);
  AddResult(body, "Energy", 5);
  body.AppendVariable(MakeCarrier("Codes", 1));
  body.AppendVariable(MakeLinked("Lost", {99, 0}));
  AddGeometry(tree, group, "Ropes", {0, 4, 8, 1, 5, 9, 2, 10}, {3, 3, 2});
  AddGeometry(tree, group, "Damaged", {0, 1, 99}, {3});
  AddNode<NodeSets>(tree, group, "Sets").SetSets({{"foot", {101, 102}}, {"cells", {1, 2, 3}}});
}

class RyxExport : public RyxProgram {
 protected:
  RyxExport() {
    SaveModel("tower.ryx", BuildTower);
    SaveModel("body.ryx", [](Tree& tree) {
      AddGeometry(tree, NodeTree::kRootId, "Body", {0, 1, 2, 3, 4, 5, 6, 7}, {8});
    });
    SaveModel("damaged.ryx", [](Tree& tree) {
      AddGeometry(tree, NodeTree::kRootId, "Damaged", {0, 1, 99}, {3});
    });
    SaveModel("linked.ryx", [](Tree& tree) {
      auto& body = AddGeometry(tree, NodeTree::kRootId, "Body", {0, 1, 2, 3}, {4});
      AddResult(body, "Heat|before", 12);
      AddResult(body, "Heat|after", 12);
      body.AppendVariable(MakeLinked("Coordinates|after", {tree.GetNodes().GetCurrentId(), 0}));
    });
    SaveModel("empty.ryx", [](Tree&) {});
    SaveModel("steps.ryx", [](Tree& tree) {
      auto& body = AddGeometry(tree, NodeTree::kRootId, "Body", {0, 1, 2, 3}, {4});
      for (int step = 0; step < 100; ++step)
        AddResult(body, "Heat|step " + std::to_string(step), 12);
    });
  }
};

TEST_F(RyxExport, SaysWhatItWritesAndWhatNot) { ExpectTranscript("export.txt"); }

TEST_F(RyxExport, RefusesBadInputAndLeavesNothing) { ExpectTranscript("export_refusals.txt"); }

}  // namespace
}  // namespace Qov::Test
