#include <cmath>
#include <limits>

#include "merge/ArrayNames.h"
#include "ryxFixture.h"
#include "support/Streams.h"

namespace Qov::Test {
namespace {

using namespace QovRyx;

class RyxStats : public RyxProgram {
 protected:
  static void Add(Geometry& geometry, std::string_view name, std::uint32_t kind,
                  const std::vector<float>& values, std::uint8_t width = 1) {
    geometry.AppendVariable(MakeVariable(std::string(name), kind, NumericArray::Of(values, width)));
  }
  static void AddIds(Geometry& geometry, std::string_view name, std::uint32_t kind,
                     const std::vector<std::uint32_t>& ids) {
    geometry.AppendVariable(MakeVariable(std::string(name), kind, NumericArray::Of(ids)));
  }

  /// Saves three points and two cells, with results whose values begin at `start`.
  void Save(const std::string& name, float start, bool hasIds) const {
    SaveModel(name, [=](Tree& tree) {
      Group& group = AddNode<Group>(tree, NodeTree::kRootId, "Top");
      group.mTakesModels = 1;
      Geometry& geometry = AddNode<Geometry>(tree, 2, "Mesh, \"fine\"");
      Add(geometry, QovRyx::kCoordinates, 0, {0, 0, 0, 1, 0, 0, 2, 0, 0}, 3);
      AddIds(geometry, QovRyx::kConnectivity, 4, {0, 1, 1, 2});
      AddIds(geometry, QovRyx::kPolylength, 5, {2, 2});
      if (hasIds) AddIds(geometry, QovRyx::kNodeIds, 6, {101, 102, 103});
      if (hasIds) AddIds(geometry, QovRyx::kElementIds, 9, {4294967295U, 7});
      const float nan = std::nanf("");
      Add(geometry, "Heat", 12, {nan, start, start + 1});
      Add(geometry, "Strain|LC1", 12, {start + 1, start});
      Add(geometry, "Free", 12, {5, 4, 3, 2, start});
      Add(geometry, "Move", 13, {3, 4, 0, 0, 0, start, 1, nan, 1}, 3);
      Add(geometry, "Holes", 12, {nan, nan, nan});
      geometry.AppendVariable(MakeLinked("Again", {3, hasIds ? 5U : 3U}));
      geometry.AppendVariable(MakeLinked("Lost", {77, 0}));
    });
  }
};

TEST_F(RyxStats, NamesThePlacesOfExtremes) {
  Save("a.ryx", 1, true);
  Save("b.ryx", -8, false);
  ExpectTranscript("stats.txt");
}

TEST_F(RyxStats, SumsExactly) {
  constexpr float kLargest = std::numeric_limits<float>::max();
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  SaveModel("sums.ryx", [](Tree& tree) {
    Geometry& geometry = AddNode<Geometry>(tree, NodeTree::kRootId, "Values");
    Add(geometry, "Cancelling", 12, {1e30F, 3, -1e30F});
    Add(geometry, "Largest", 12, {kLargest, kLargest});
    Add(geometry, "Infinite", 12, {1, kInfinity, 2});
    Add(geometry, "Both infinities", 12, {kInfinity, 0, -kInfinity});
    Add(geometry, "Long vector", 13, {kLargest, kLargest, kLargest}, 3);
    AddIds(geometry, "Counts", 9, {4294967295U, 4294967295U});
  });
  ExpectTranscript("stats_sums.txt");
}

}  // namespace
}  // namespace Qov::Test
