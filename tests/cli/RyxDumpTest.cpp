#include <cmath>

#include "ryxFixture.h"
#include "support/RandomModel.h"
#include "support/Streams.h"

namespace Qov::Test {
namespace {

using namespace QovRyx;
using testing::EndsWith;
using testing::HasSubstr;

class RyxDump : public RyxProgram {
 protected:
  RyxDump() {
    mPath = SaveModel("model.ryx", [](Tree& tree) {
      BuildPlate(tree, {"Stress|LC1", "Stress|LC1"}, 1);
      Geometry& odd = AddNode<Geometry>(tree, PlateIds::kShape, "Odd \xFF");
      odd.AppendVariable(MakeVariable(
          "Rest", 13,
          NumericArray::Of(std::vector<float>{1, -0.0F, 0.1F, 4, 5, 6, NAN, -INFINITY}, 3)));
      odd.AppendVariable(
          MakeVariable("Ids", 9, NumericArray::Of(std::vector<std::uint32_t>{7, 4294967295U})));
      odd.AppendVariable(MakeVariable("Empty", 12, NumericArray()));
      odd.AppendVariable(MakeLinked("Same ids", {6, 1}));
      odd.AppendVariable(MakeLinked("Lost", {77, 0}));
      odd.AppendVariable(MakeVariable("Mode|1", 12, NumericArray::Of(Ramp(2, 1.5F))));
      AddViewPointPath(tree, "walk", 2);
      tree.GetViewPointPaths()[0].mViewPoints[1].mName = "Side\033";
      tree.GetViewPoint().mName = "Home";
      FillSequencer(tree.GetSequencerData());
    });
  }

  static void FillSequencer(SequencerData& data) {
    data.mName = "Show";
    data.mSequences["main \x1E"] = {{{}, 1, 2, 0x3F800000}};
    auto move = std::make_unique<MoveAction>();
    move->mVector[1] = 0x40490FDB;
    data.mActions.mSlots.push_back(std::move(move));
    data.mActions.mSlots.emplace_back();
  }

  std::string mPath;
};

TEST_F(RyxDump, PrintsValues) { ExpectTranscript("dump_values.txt"); }
TEST_F(RyxDump, PrintsAllOtherParts) { ExpectTranscript("dump_state.txt"); }
TEST_F(RyxDump, ReportsErrors) { ExpectTranscript("dump_errors.txt"); }

TEST_F(RyxDump, PrintsAllArraysOfRandomModelsBitForBit) {
  std::size_t numArrays = 0;
  for (std::uint32_t seed = 1; seed <= 6; ++seed) {
    mPath = SaveModel("random.ryx", [&](Tree& tree) { RandomModel(seed).Fill(tree); });
    Tree tree(false);
    LoadTree(tree, mPath);
    ForEachGeometry(tree.GetNodes(), [&](std::uint32_t id, const Geometry& geometry) {
      for (std::size_t i = 0; i < geometry.GetVariables().size(); ++i) {
        std::vector<std::uint32_t> bits;
        geometry.GetVariables()[i].mValues.GetValues(bits);
        if (bits.empty()) continue;
        const std::string bytes(reinterpret_cast<const char*>(bits.data()), 4 * bits.size());
        EXPECT_THAT(
            Run({"dump", mPath, std::to_string(id), std::to_string(i), "--format", "npy"}).mOut,
            EndsWith("\n" + bytes));
        ++numArrays;
      }
    });
  }
  EXPECT_GT(numArrays, 10U);
}

TEST_F(RyxDump, NamesOfNodeSetsKeepTheirZeroBytes) {
  const auto save = [this](const char* file, const std::string& name) {
    return SaveModel(file, [&name](Tree& tree) {
      AddNode<NodeSets>(tree, 1, "S").SetSets({{name, {7}}, {"a", {8}}});
    });
  };
  const std::string path = save("zero.ryx", {"a\0b", 3});
  EXPECT_EQ(Run({"dump", path, "--node-set", "S:a\\x00b"}).mOut, "7\n");
  EXPECT_THAT(Run({"ls", path}).mOut, HasSubstr("a\\x00b"));
  EXPECT_THAT(Run({"check", path}).mOut, HasSubstr("zero-byte"));
  EXPECT_THAT(Run({"diff", path, save("other.ryx", "ab")}).mOut,
              HasSubstr("set a\\x00b: only in A"));
}

TEST_F(RyxDump, WritesStreamsAndTheirBlocks) {
  for (const auto& [name, bytes] : ReadStreams(mPath)) {
    EXPECT_EQ(Run({"dump", mPath, "--stream", name}).mOut, bytes);
  }
  WriteStreams(mDir / "streams", {{"Data\x1E", "12345"}, {"More", "678"}});
  ExpectTranscript("dump_blocks.txt");
}

}  // namespace
}  // namespace Qov::Test
