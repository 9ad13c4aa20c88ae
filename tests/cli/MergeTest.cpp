#include <cstring>

#include "ryxFixture.h"
#include "support/Files.h"
#include "support/Streams.h"

namespace Qov::Test {
namespace {

/// Runs RyxMerge, and shows its outputs with ryx.
class RyxMergeProgram : public RyxProgram {
 protected:
  RyxMergeProgram() {
    for (const char* name : {"v.vpt", "w.vpt"}) SaveViewPointFile(mDir / name, name);
    for (const std::uint32_t seed : {1U, 2U, 10U}) {
      SavePlate(mDir / "run" + std::to_string(seed) + ".ryx", {"Stress|LC1", "Stress|LC2"}, seed);
    }
  }
};

TEST_F(RyxMergeProgram, PrintsItsUsageAndWritesALog) { ExpectTranscript("merge_usage.txt"); }

TEST_F(RyxMergeProgram, MergesInEveryMode) {
  // A first model in which a node is not a geometry, and a further one with results for it.
  SaveModel("first.ryx", [](QovRyx::Tree& tree) {
    BuildPlate(tree, {"Stress|LC1", "Stress|LC2"}, 1);
    AddNode<QovRyx::Group>(tree, PlateIds::kGroup, "Group");
  });
  SaveModel("other.ryx", [](QovRyx::Tree& tree) {
    BuildPlate(tree, {"Stress|LC1"}, 3);
    AddNode<QovRyx::Geometry>(tree, PlateIds::kGroup, "Stray")
        .AppendVariable(MakeVariable("Area", 12, QovRyx::NumericArray::Of(Ramp(5, 0.0F))));
  });
  SaveModel("links.ryx", [](QovRyx::Tree& tree) {
    BuildPlate(tree, {"A", "A|LC1", "A|LC2"}, 4);
    auto& mesh = *QovRyx::AsGeometry(tree.GetNodes().GetReqNode(PlateIds::kGeometry));
    mesh.AppendVariable(MakeLinked("Twin|LC1", {PlateIds::kGeometry, 4}));
    mesh.AppendVariable(MakeLinked("Lost|LC1", {PlateIds::kGeometry, 99}));
  });
  Streams streams = ReadStreams(mDir / "run2.ryx");
  for (int i = 1; i < 10; ++i) streams["Stream " + std::to_string(i) + "\n"] = "bytes";
  WriteStreams(mDir / "strange.ryx", streams);
  WriteStreams(mDir / "strange.vpt", {{"View Point\x13", "bytes"}});
  ExpectTranscript("merge_modes.txt");
}

TEST_F(RyxMergeProgram, AddsViews) {
  // A truncated stream of views.
  Streams model = ReadStreams(mDir / "run2.ryx");
  model["View Points"] = ReadStreams(mDir / "v.vpt").at("View Points").substr(0, 3000);
  WriteStreams(mDir / "damaged.ryx", model);
  ExpectTranscript("merge_views.txt");
}

TEST_F(RyxMergeProgram, MergesManyFilesAndSmallBlocks) {
  SavePlate(mDir / "a.ryx", {"Stress|LC1", "Mass"}, 1, 3000);
  SavePlate(mDir / "b.ryx", {"Stress|LC1", "Mass"}, 2, 1700);
  ExpectTranscript("merge_limits.txt");
}

TEST_F(RyxMergeProgram, RefusesInvalidInputsAndLeavesNoFiles) {
  // Both modes and both orders. Each message and status is shown once.
  WriteFile(mDir / "refuse",
            "for mode in datasets instances; do\n"
            "  RyxMerge --merge-as-$mode run1.ryx $1 out.ryx; echo $?\n"
            "  RyxMerge --merge-as-$mode $1 run1.ryx out.ryx; echo $?\n"
            "done 2>&1 | grep '^[0-9DE]\\|^The file' | sort -u; ls | grep out.ryx; cmp run1.ryx "
            "before\n");
  WriteFile(mDir / "before", ReadFile(mDir / "run1.ryx"));
  // The node sets at the end of the heavy block of a further instance are not read, and neither is
  // the checksum after them, which protects the results before them.
  std::string damaged = ReadFile(mDir / "run2.ryx");
  std::uint32_t size = 0;
  std::memcpy(&size, damaged.data() + 16 + 4 + 133, sizeof(size));
  damaged[2800 + size - 1] ^= 1;
  WriteFile(mDir / "damaged.ryx", damaged);
  for (const auto& [name, type] : {std::pair{"unknown.ryx", "Geometry"}, {"unread.ryx", "Shape"}}) {
    Streams streams = ReadStreams(mDir / "run2.ryx");
    std::string& tree = streams.at("Ryx Tree");
    tree[tree.rfind(type)] = 'X';
    if (type == std::string("Shape")) streams.at("Resources").clear();
    WriteStreams(mDir / name, streams);
  }
  ExpectTranscript("merge_refusals.txt");
}

}  // namespace
}  // namespace Qov::Test
