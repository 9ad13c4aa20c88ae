#include <bit>
#include <functional>
#include <limits>

#include "diff/ModelDiff.h"
#include "ryxFixture.h"
#include "support/Errors.h"
#include "support/Files.h"
#include "support/RandomModel.h"
#include "support/SharedModels.h"
#include "support/Streams.h"

namespace Qov::Test {
namespace {

using namespace QovRyx;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Tools::DiffOptions;
using Tools::ModelDifference;

class RyxDiff : public RyxProgram {
 protected:
  using Build = std::function<void(Tree&)>;

  /// Returns the differences as "code path result: text".
  static std::vector<std::string> Describe(const Tools::DiffReport& report) {
    std::vector<std::string> texts;
    for (const ModelDifference& found : report.mDifferences) {
      std::string text = found.mCode;
      for (const std::string& name : found.mPath) text += "/" + name;
      texts.push_back(text + " " + Unbarred(found.mResult) + ": " + found.mText);
    }
    return texts;
  }
  static std::vector<std::string> DiffFiles(const std::string& a, const std::string& b,
                                            const DiffOptions& options) {
    Tree treeA(false);
    Tree treeB(false);
    LoadTree(treeA, a);
    LoadTree(treeB, b);
    return Describe(Tools::DiffModels(treeA, treeB, options));
  }
  static Tools::DiffReport DiffInMemory(const Build& buildA, const Build& buildB) {
    Tree treeA(false);
    Tree treeB(false);
    buildA(treeA);
    buildB(treeB);
    return Tools::DiffModels(treeA, treeB, {});
  }
  std::vector<std::string> Diff(const Build& buildA, const Build& buildB,
                                DiffOptions options = {}) const {
    options.mIgnored.insert("history");
    return DiffFiles(SaveModel("a.ryx", buildA), SaveModel("b.ryx", buildB), options);
  }

  static void Plate(Tree& tree) {
    BuildPlate(tree, {"Stress|LC1", "Stress|LC2", "Stress|LC1"}, 1);
    AddViewPointPath(tree, "walk", 2);
  }
  static NodeTree::Node& Entry(Tree& tree, std::uint32_t id) {
    return tree.GetNodes().GetReqNode(id);
  }
  /// Returns a builder of the plate with a change.
  static Build Changed(const std::function<void(Tree&)>& change) {
    return [change](Tree& tree) {
      Plate(tree);
      change(tree);
    };
  }

  /// Compares two models that have one result each, with these values.
  std::vector<std::string> DiffValues(const std::vector<float>& a, const std::vector<float>& b,
                                      const DiffOptions& options) const {
    const auto build = [](const std::vector<float>& values) {
      return [&values](Tree& tree) {
        AddNode<Geometry>(tree, 1, "G")
            .AppendVariable(MakeVariable("R|LC1", 12, NumericArray::Of(values, 2)));
      };
    };
    return Diff(build(a), build(b), options);
  }
};

TEST_F(RyxDiff, FindsNoDifferenceBetweenAModelAndItself) {
  ASSERT_EQ(Run({"sample", mDir / ""}).mStatus, 0);
  for (const char* name : {"plate.ryx", "assembly.ryx", "steps/run3.ryx"}) {
    EXPECT_THAT(DiffFiles(mDir / name, mDir / name, {}), IsEmpty()) << name;
  }
  for (std::uint32_t seed = 0; seed < 60; ++seed) {
    const auto build = [seed](Tree& tree) { RandomModel(seed).Fill(tree); };
    EXPECT_THAT(Diff(build, build), IsEmpty()) << seed;
  }
}

TEST_F(RyxDiff, FindsTheSameResultsInOldVersionsOfASharedModel) {
  const std::string plate = FindSharedModel("plate.ryx");
  if (plate.empty()) GTEST_SKIP() << "no shared models";
  DiffOptions options;
  options.mIgnored = {"flags", "groups", "materials", "node-sets", "version", "views"};
  for (const char* name : {"plate_small_blocks.ryx", "plate_version_0.5.ryx",
                           "plate_version_0.6.ryx", "plate_version_1.0.ryx"}) {
    // Nodes of old versions have no attributes.
    EXPECT_THAT(DiffFiles(plate, FindSharedModel(name), options),
                testing::Each(testing::MatchesRegex("attributes/Plate(/Skin)? :.*")))
        << name;
  }
}

TEST_F(RyxDiff, FindsEachChangeUnlessIgnored) {
  struct Change {
    const char* mIgnore;  ///< The word for it, or an empty text.
    void (*mDo)(Tree& tree);
  };
  const std::vector<Change> changes = {
      {"groups", [](Tree& t) { Content<Group>(t, PlateIds::kGroup).mScale[1] = -1.0F; }},
      {"attributes",
       [](Tree& t) {
         auto& attributes = Content<Group>(t, PlateIds::kGroup).mAttributes;
         attributes["mass"] = 4.25F;
         attributes["new"] = 1U;
       }},
      {"materials",
       [](Tree& t) {
         auto& values = Content<Shape>(t, PlateIds::kShape).mMaterial.mValues;
         values.mColour2.mG = 1.0F;
         values.mMode = 2;
       }},
      {"", [](Tree& t) { Result(t, 3).mKindHighByte = 5; }},
      {"flags", [](Tree& t) { Result(t, 3).mValue2 = 5; }},
      {"attributes", [](Tree& t) { Result(t, 3).mAttributes["load"] = 9.0F; }},
      {"", [](Tree& t) { Result(t, 3).mValues = NumericArray::Of(Ramp(39, 101)); }},
      {"", [](Tree& t) { Result(t, 3).mValues = NumericArray::Of(Ramp(40, 101), 2); }},
      {"values",
       [](Tree& t) {
         std::vector<float> values = Ramp(40, 101);
         values[5] = 7.0F;
         Result(t, 4).mValues = NumericArray::Of(values);
       }},
      {"values", [](Tree& t) { Result(t, 1).mValues = NumericArray::Of(Count(40, 2)); }},
      {"links",
       [](Tree& t) {
         Result(t, 3).mLink = ResultLink({PlateIds::kGeometry, 2});
         Result(t, 3).mValues = NumericArray();
       }},
      {"", [](Tree& t) { Mesh(t).AppendVariable(Result(t, 3)); }},
      {"",
       [](Tree& t) {
         AddNode<Group>(t, 1, "Plate");
         for (std::uint32_t id = 6; id < 9; ++id) AddNode<Group>(t, id, "Deeper");
       }},
      {"tree-links", [](Tree& t) { Entry(t, PlateIds::kShape).mParent = 1; }},
      {"tree-links", [](Tree& t) { Entry(t, PlateIds::kSets).mPreviousSibling = 77; }},
      {"tree-links", [](Tree& t) { Entry(t, PlateIds::kGroup).mLastChild = PlateIds::kShape; }},
      {"tree-links", [](Tree& t) { Entry(t, 1).mLastChild = 0; }},
      {"node-sets",
       [](Tree& t) {
         auto& sets = Content<NodeSets>(t, PlateIds::kSets);
         sets.SetSets({{"left", Count(5, 1)}, {"none", {}}, {"right", {21, 99, 23}}});
       }},
      {"views",
       [](Tree& t) { t.GetViewPointPaths()[0].mViewPoints[1].mViewState.mMiscState.mText2 = "x"; }},
      {"views", [](Tree& t) { AddViewPointPath(t, "walk", 0); }},
      {"views", [](Tree& t) { t.GetSequencerData().mName = "show"; }},
  };
  std::string text;
  for (const Change& change : changes) {
    const auto found = Diff(Plate, Changed(change.mDo));
    EXPECT_EQ(found.size(), 1U);
    text += found.empty() ? "nothing\n" : found[0] + "\n";
    DiffOptions options;
    options.mIgnored = {change.mIgnore};
    if (*change.mIgnore == '\0') continue;
    EXPECT_THAT(Diff(Plate, Changed(change.mDo), options), IsEmpty()) << found[0];
  }
  ExpectGolden("diff_changes.txt", text);
}

TEST_F(RyxDiff, ReportsOrderUnlessIgnored) {
  const auto groups = [](const std::vector<const char*>& names) {
    return [names](Tree& tree) {
      for (const char* name : names) {
        AddNode<Geometry>(tree, 1, name)
            .AppendVariable(MakeVariable(name, 12, NumericArray::Of(Ramp(3, 0))));
      }
    };
  };
  const auto sets = [](const std::vector<NodeSets::Set>& list) {
    return [list](Tree& tree) { AddNode<NodeSets>(tree, 1, "S").SetSets(list); };
  };
  const auto paths = [](const std::vector<const char*>& names) {
    return [names](Tree& tree) {
      for (const char* name : names) AddViewPointPath(tree, name, 1);
    };
  };
  DiffOptions anyOrder;
  anyOrder.mIgnored = {"order"};
  const auto expectOrder = [&](const Build& before, const Build& after, const char* text) {
    EXPECT_THAT(Diff(before, after), ElementsAre(text));
    EXPECT_THAT(Diff(before, after, anyOrder), IsEmpty());
  };
  expectOrder(groups({"A", "B", "C"}), groups({"C", "A", "B"}),
              "order : the order of the nodes below it differs");
  expectOrder(sets({{"l", {1}}, {"l", {2}}, {"r", {3}}}),
              sets({{"r", {3}}, {"l", {1}}, {"l", {2}}}),
              "order/S : the order of the sets differs");
  expectOrder(paths({"A", "B"}), paths({"B", "A"}),
              "order : the order of the paths of views differs");
}

TEST_F(RyxDiff, ComparesValuesBitForBitOrWithinATolerance) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  const float otherNaN = std::bit_cast<float>(0x7FC00001U);
  const float above = std::nextafter(std::nextafter(2.0F, 3.0F), 3.0F);
  const auto with = [](const Tools::Tolerance& tolerance) {
    DiffOptions options;
    options.mTolerances.SetDefault(tolerance);
    return options;
  };
  EXPECT_THAT(DiffValues({kNaN, 0.0F}, {otherNaN, -0.0F}, {}),
              ElementsAre("values/G R|LC1: 2 of 2 values differ, most at item 0, component 0: "
                          "NaN (0x7FC00000) and NaN (0x7FC00001)"));
  EXPECT_THAT(DiffValues({kNaN, 0.0F}, {otherNaN, -0.0F}, with({})), IsEmpty());
  EXPECT_THAT(DiffValues({1.0F, 2.0F, 3.0F}, {1.5F, kNaN, 9.0F}, with({0.5, 0, 0})),
              ElementsAre("values/G R|LC1: 2 of 3 values differ, most at item 0, component 1: "
                          "2.0 and NaN (0x7FC00000)"));
  EXPECT_THAT(DiffValues({100.0F, -1.0F}, {101.0F, -1.02F}, with({0, 0.01, 0})),
              ElementsAre(HasSubstr("1 of 2 values differ, most at item 0, component 1")));
  EXPECT_THAT(DiffValues({2.0F}, {above}, with({0, 0, 2})), IsEmpty());
  EXPECT_THAT(DiffValues({2.0F}, {above}, with({0, 0, 1})), testing::SizeIs(1));
  EXPECT_THAT(DiffValues({1e-45F}, {-1e-45F}, with({0, 0, 2})), IsEmpty());
  EXPECT_THAT(DiffValues({kInfinity, std::numeric_limits<float>::max()}, {kInfinity, kInfinity},
                         with({1e30, 0.5, 9})),
              testing::SizeIs(1));
}

TEST_F(RyxDiff, ComparesIntegersOfLinkedResultsExactly) {
  const auto linkedTo = [](std::uint32_t position) {
    return [position](Tree& tree) {
      Geometry& geometry = AddNode<Geometry>(tree, 1, "G");
      geometry.AppendVariable(MakeVariable("Ids", 9, NumericArray::Of(Count(2, 7))));
      geometry.AppendVariable(MakeVariable("More ids", 9, NumericArray::Of(Count(2, 8))));
      geometry.AppendVariable(MakeVariable("Bits", 12, NumericArray::Of(Count(2, 8))));
      geometry.AppendVariable(MakeLinked("R", {2, position}));
    };
  };
  DiffOptions options;
  options.mIgnored = {"links"};
  options.mTolerances.SetDefault({1.0, 0, 0});
  EXPECT_THAT(Diff(linkedTo(0), linkedTo(1), options),
              ElementsAre("values/G R: 2 of 2 values differ, most at item 0: 7 and 8"));
  EXPECT_THAT(Diff(linkedTo(0), linkedTo(2), options), testing::SizeIs(1));
}

TEST_F(RyxDiff, UsesTheLastToleranceWhosePatternMatches) {
  DiffOptions options;
  options.mTolerances.SetDefault({5.0, 0, 0});
  options.mTolerances.Add(Tools::ParseNamedTolerance("R*:abs=0.25,ulp=3"));
  EXPECT_THAT(DiffValues({1.0F}, {2.0F}, options), testing::SizeIs(1));
  options.mTolerances.Add(Tools::ParseNamedTolerance("R\\x1ELC?:abs=1"));
  EXPECT_THAT(DiffValues({1.0F}, {2.0F}, options), IsEmpty());
  for (const char* wrong : {"R", "R:", ":abs=1", "R:abs=", "R:abs=x", "R:abs=-1", "R:abs=1,",
                            "R:ulp=1.5", "R:rel=inf"}) {
    ExpectError(ErrorType::MiscellaneousError, "should look like",
                [wrong] { Tools::ParseNamedTolerance(wrong); });
  }
}

TEST_F(RyxDiff, MatchesNamesInAllTheirForms) {
  const std::string name = "\u00C4 [MPa]\x1ELC1";
  for (const char* pattern :
       {"\u00C4 [MPa]\\x1ELC1", "\u00C4 [MPa]\u241ELC1", "\u00C4 [MPa]\x1ELC1", "\u00C4 [MPa]",
        "\\xC3\\x84 [MPa]\\x1ELC1", "\\xC3*LC?", "*\u241ELC[12]", "*]"}) {
    Tools::Tolerances tolerances;
    tolerances.Add(Tools::ParseNamedTolerance(pattern + std::string(":abs=1")));
    EXPECT_NE(tolerances.Find(name), nullptr) << pattern;
    EXPECT_TRUE(tolerances.FindUnused({name}).empty()) << pattern;
  }
  Tools::Tolerances tolerances;
  tolerances.Add(Tools::ParseNamedTolerance("LC1:abs=1"));
  EXPECT_EQ(tolerances.Find(name), nullptr);
  EXPECT_EQ(tolerances.FindUnused({name}).at(0)->mPattern, "LC1");
}

TEST_F(RyxDiff, ReportsPartsThatCannotBeRead) {
  const std::string path = SaveModel("a.ryx", Plate);
  std::string bytes = ReadFile(path);
  bytes[2900] = static_cast<char>(~bytes[2900]);  // in the heavy data
  WriteFile(mDir / "b.ryx", bytes);
  const auto found = DiffFiles(path, mDir / "b.ryx", {});
  EXPECT_THAT(found, testing::Each(testing::StartsWith("unreadable/Plate/S")));
  EXPECT_THAT(found, testing::SizeIs(6));
}

TEST_F(RyxDiff, TakesTimeProportionalToTheTrees) {
  constexpr std::uint32_t kMany = 20000;
  const auto wide = [](const char* prefix) {
    return [prefix](Tree& tree) {
      for (std::uint32_t i = 0; i < kMany; ++i) {
        AddNode<Group>(tree, 1, (i % 2 == 0 ? "Same" : prefix) + std::to_string(i / 8));
      }
    };
  };
  EXPECT_EQ(Describe(DiffInMemory(wide("A"), wide("B"))).size(), kMany);
  const auto deep = [](float scale) {
    return [scale](Tree& tree) {
      for (std::uint32_t i = 1; i < kMany; ++i) AddNode<Group>(tree, i, "G").mScale[0] = scale;
    };
  };
  EXPECT_EQ(Describe(DiffInMemory(deep(1), deep(2))).size(), kMany - 1);
}

TEST_F(RyxDiff, PrintsDifferencesAsTextAndJson) {
  SaveModel("a.ryx", Plate);
  SaveModel("b.ryx", Changed([](Tree& tree) {
              Mesh(tree).EditVariable(0).mValues = NumericArray::Of(Ramp(120, 2), 3);
              Mesh(tree).RenameVariable(3, "evil\033[2J");
              AddNode<Group>(tree, PlateIds::kGroup, "New").mAttributes["x"] = 1U;
            }));
  SaveViewPointFile(mDir / "a.vpt", "walk");
  Streams streams = ReadStreams(mDir / "a.ryx");
  streams["Extra\033"] = "12345";
  WriteStreams(mDir / "extra.ryx", streams);
  streams["Extra\033"] = "12346";
  WriteStreams(mDir / "extra2.ryx", streams);
  ExpectTranscript("diff.txt");
}

}  // namespace
}  // namespace Qov::Test
