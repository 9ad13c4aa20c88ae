#include <cmath>
#include <cstring>

#include "ryxFixture.h"
#include "support/RandomModel.h"
#include "support/Streams.h"

namespace Qov::Test {
namespace {

using QovRyx::Geometry;
using QovRyx::NodeTree;
using QovRyx::NumericArray;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using Tools::Json;

class RyxDump : public RyxProgram {
 protected:
  RyxDump() {
    mPath = SaveModel("model.ryx", [](QovRyx::Tree& tree) {
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
      AddViewPointPath(tree, "walk", 2);
      tree.GetViewPointPaths()[0].mViewPoints[1].mName = "Side\033";
      tree.GetViewPoint().mName = "Home";
      FillSequencer(tree.GetSequencerData());
    });
  }

  static void FillSequencer(QovRyx::SequencerData& data) {
    data.mName = "Show";
    data.mSequences["main \x1E"] = {{1, 2, 0x3F800000}};
    auto move = std::make_unique<QovRyx::MoveAction>();
    move->mVector[1] = 0x40490FDB;
    data.mActions.mSlots.push_back(std::move(move));
    data.mActions.mSlots.emplace_back();
  }

  Outcome Dump(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"dump", mPath});
    return Run(arguments);
  }
  /// Command lines and what came of them.
  std::string Transcript(const std::vector<std::vector<std::string>>& commands) const {
    std::string text;
    for (const auto& arguments : commands) {
      text += "$";
      for (const std::string& word : arguments) text += " " + word;
      const Outcome outcome = Dump(arguments);
      text += "\n" + outcome.mOut + outcome.mErr;
    }
    return text;
  }

  std::string mPath;
};

TEST_F(RyxDump, PrintsValuesAsTextCsvAndJson) {
  ExpectGolden("dump_values.txt", Transcript({{"6", "Rest"},
                                              {"Odd \\xFF", "0", "--format", "csv"},
                                              {"6", "0", "--format", "json"},
                                              {"6", "Ids"},
                                              {"6", "Ids", "--format", "csv"},
                                              {"6", "Same ids", "--format", "json"},
                                              {"6", "Empty"}}));
  for (const std::string position : {"0", "1", "3"}) {
    const Json values = ParseJson(Dump({"Skin", position, "--format", "json"}), "dump");
    EXPECT_EQ(values["values"].size(), 40U);
  }
}

TEST_F(RyxDump, SaysWhatItCannotFindOrDo) {
  const std::string text = Transcript({{"6"},
                                       {},
                                       {"--history", "--sequencer"},
                                       {"Skni", "0"},
                                       {"Skin", "Stress\\x1ELC1"},
                                       {"Skin", "Stres\\x1ELC2"},
                                       {"6", "Lost"},
                                       {"--material", "Plate"},
                                       {"--attributes", "5"},
                                       {"--node-set", "Sets:lef"},
                                       {"--view-point", "Nowhere"},
                                       {"--stream", "Heavy"},
                                       {"--history", "--format", "npy"},
                                       {"--history", "-o", mPath}});
  ExpectGolden("dump_errors.txt", text);
  EXPECT_EQ(Dump({"Skni", "0"}).mStatus, 2);
}

TEST_F(RyxDump, PrintsEverythingElseAsText) {
  ExpectGolden("dump_state.txt", Transcript({{"--sequencer"},
                                             {"--history"},
                                             {"--material", "Skin"},
                                             {"--attributes", "Plate"},
                                             {"--attributes", "Skin"},
                                             {"--node-set", "Sets"},
                                             {"--node-set", "Sets:right"}}));
  const std::string view = Dump({"--view-point", "Side\\x1B"}).mOut;
  EXPECT_THAT(view,
              StartsWith("name: \"Side\\x1B\"\npoint1: 0.0 0.0 0.0\nquad1: 1065353216 (1.0) "));
  EXPECT_THAT(view, HasSubstr("\nviewState:\n  caeState:\n    name1: \"\"\n"));
  EXPECT_EQ(view, Dump({"--view-point", "2"}).mOut);
}

TEST_F(RyxDump, PrintsEverythingElseAsDocuments) {
  const auto dump = [this](std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"--format", "json"});
    return ParseJson(Dump(arguments), "dump");
  };
  const Json view = dump({"--view-point", "Home"})["view"];
  EXPECT_EQ(view["viewState"]["caeState"]["probe"]["size"], 16);
  EXPECT_EQ(view["viewState"]["miscState"]["flags2"], Json::parse("[1, 0, 0, 0, 0]"));
  EXPECT_EQ(view.size(), 13U);
  const Json sequencer = dump({"--sequencer"})["sequencer"];
  EXPECT_EQ(sequencer["sequences"]["main \x1E"][0]["value3"], 0x3F800000);
  EXPECT_EQ(sequencer["actions"],
            Json::parse(R"([{"type": "move", "vector": [0, 1078530011, 0], "value": 0}, null])"));
  EXPECT_EQ(dump({"--history"})["history"][0]["application"], "Tester");
  EXPECT_EQ(dump({"--material", "3"})["material"]["colour1"], Json::parse("[0.8, 0.8, 0.8, 1.0]"));
  EXPECT_EQ(dump({"--attributes", "2"})["attributes"]["mass"]["value"], 4.25);
  EXPECT_EQ(dump({"--attributes", "4"})["attributes"][2]["result"], "Stress\x1ELC1");
  EXPECT_EQ(dump({"--node-set", "5"})["sets"][2]["values"], Json::parse("[21, 22, 23]"));
  EXPECT_EQ(dump({"--blocks"})["blocks"][0]["position"], 2800);
}

/// The bytes behind the header of an .npy file, whose header has to be as expected.
std::string NpyValues(const std::string& file, const std::string& header) {
  EXPECT_THAT(file, StartsWith(std::string("\x93NUMPY\x01\x00", 8)));
  const std::size_t end = file.find('\n') + 1;
  EXPECT_EQ(end % 64, 0U);
  EXPECT_EQ(end, 10U + static_cast<unsigned char>(file[8]));
  EXPECT_THAT(file.substr(10, end - 10), StartsWith(header));
  return file.substr(end);
}

TEST_F(RyxDump, WritesNumPyFiles) {
  EXPECT_EQ(NpyValues(Dump({"6", "Ids", "--format", "npy"}).mOut,
                      "{'descr': '<u4', 'fortran_order': False, 'shape': (2, 1), }"),
            std::string("\x07\0\0\0\xFF\xFF\xFF\xFF", 8));
  EXPECT_EQ(Dump({"4", "0", "--format", "npy", "-o", mDir / "out.npy"}).mOut, "");
  const std::string values = NpyValues(
      ReadFile(mDir / "out.npy"), "{'descr': '<f4', 'fortran_order': False, 'shape': (40, 3), }");
  EXPECT_EQ(values, std::string(reinterpret_cast<const char*>(Ramp(120, 1.0F).data()), 480));
  EXPECT_EQ(NpyValues(Dump({"6", "0", "--format", "npy"}).mOut,
                      "{'descr': '<f4', 'fortran_order': False, 'shape': (8,), }")
                .size(),
            32U);
}

TEST_F(RyxDump, GivesEveryArrayOfRandomModelsBitForBit) {
  std::size_t numArrays = 0;
  for (std::uint32_t seed = 1; seed <= 6; ++seed) {
    mPath = SaveModel("random.ryx", [&](QovRyx::Tree& tree) { RandomModel(seed).Fill(tree); });
    QovRyx::Tree tree(false);
    LoadTree(tree, mPath);
    QovRyx::ForEachGeometry(tree.GetNodes(), [&](std::uint32_t id, const Geometry& geometry) {
      for (std::size_t i = 0; i < geometry.GetVariables().size(); ++i) {
        std::vector<std::uint32_t> bits;
        geometry.GetVariables()[i].mValues.GetValues(bits);
        if (bits.empty()) continue;
        const std::string bytes(reinterpret_cast<const char*>(bits.data()), 4 * bits.size());
        EXPECT_THAT(Dump({std::to_string(id), std::to_string(i), "--format", "npy"}).mOut,
                    EndsWith("\n" + bytes));
        ++numArrays;
      }
    });
  }
  EXPECT_GT(numArrays, 10U);
}

TEST_F(RyxDump, WritesStreamsAndTheirBlocks) {
  const Streams streams = ReadStreams(mPath);
  for (const auto& [name, bytes] : streams) EXPECT_EQ(Dump({"--stream", name}).mOut, bytes);
  WriteStreams(mPath, {{"Data\x1E", "12345"}, {"More", "678"}});
  ExpectGolden("dump_blocks.txt", Transcript({{"--blocks"},
                                              {"--stream", "Data\\x1E", "--blocks"},
                                              {"--stream", "More", "--blocks", "--format", "json"},
                                              {"--stream", "Data\\x1E"}}));
}

TEST_F(RyxDump, GivesWhatCanBeReadOfDamagedFiles) {
  const std::string whole = ReadFile(mPath);
  WriteFile(mPath, whole.substr(0, whole.size() - 10));  // in the history
  const Outcome values = Dump({"6", "Ids"});
  EXPECT_EQ(values.mStatus, 2);
  EXPECT_EQ(values.mOut, "7\n4294967295\n");
  EXPECT_EQ(values.mErr, "ryx dump: " + mPath + ": Unable to read from file (in the history)\n");
  EXPECT_EQ(Dump({"6", "Same ids"}).mOut, "");
  EXPECT_THAT(Dump({"--view-point", "Home"}).mOut, HasSubstr("name: \"Home\"\n"));
  EXPECT_THAT(Dump({"--blocks"}).mOut,
              HasSubstr("?  0x01 compressed  (beyond the end of the file)"));
  EXPECT_EQ(Dump({"--stream", "Ryx Tree"}).mStatus, 0);
  EXPECT_EQ(Dump({"--stream", "Global Information"}).mStatus, 2);
}

}  // namespace
}  // namespace Qov::Test
