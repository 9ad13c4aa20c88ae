#include "Qov/Ryx/MergeEntryPoints.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <functional>

#include "Qov/Ryx/RyxMerge.h"
#include "support/Files.h"
#include "support/ModelBuilder.h"
#include "support/ModelCompare.h"
#include "support/ScopedEnvironment.h"
#include "support/TempDir.h"

namespace QovRyx {
namespace {

using namespace Qov::Test;
using testing::ElementsAre;
using testing::HasSubstr;

using EntryPoint = int (*)(int, const char* const[]);

class MergeEntryPoints : public testing::Test {
 protected:
  /// Calls an entry point as a program does, with a null pointer after the last argument.
  int Call(EntryPoint merge, const std::vector<std::string>& arguments) {
    std::vector<const char*> argv = {"caller"};
    for (const std::string& argument : arguments) argv.push_back(argument.c_str());
    argv.push_back(nullptr);
    return Call(merge, static_cast<int>(argv.size()) - 1, argv.data());
  }
  int Call(EntryPoint merge, int argc, const char* const argv[]) {
    testing::internal::CaptureStderr();
    const int status = merge(argc, argv);
    mErrors = testing::internal::GetCapturedStderr();
    return status;
  }
  void ExpectError(EntryPoint merge, const std::vector<std::string>& arguments,
                   const std::string& text) {
    EXPECT_EQ(Call(merge, arguments), 2);
    EXPECT_THAT(mErrors, HasSubstr(text));
  }
  std::string Plate(const std::string& name, const std::vector<std::string>& results,
                    std::uint32_t seed) {
    SavePlate(mDir / name, results, seed);
    return mDir / name;
  }
  template <class Build>
  std::string Model(const std::string& name, Build build) {
    Tree tree("ModelMaker", "1.0", false);
    build(tree);
    SaveTree(tree, mDir / name);
    return mDir / name;
  }
  std::string MergedAsDatasets(const std::vector<std::string>& files) {
    EXPECT_EQ(merge_as_datasets(files, mDir / "expected.ryx"), 0);
    return DescribeModel(mDir / "expected.ryx");
  }

  TempDir mDir;
  std::string mOutput = mDir / "out.ryx";
  std::string mErrors;
};

TEST_F(MergeEntryPoints, DatasetsEqualThoseOfTheProgram) {
  const std::vector<std::string> files = {Plate("a.ryx", {"S"}, 1), Plate("b.ryx", {"S"}, 2),
                                          Plate("c.ryx", {"T"}, 3)};
  const std::string all = MergedAsDatasets(files);
  const std::string first = MergedAsDatasets({files[0]});
  for (const EntryPoint merge : {cae_merge_in_tree, cad_merge}) {
    EXPECT_EQ(Call(merge, {files[0], files[1], files[2], mOutput}), 0);
    EXPECT_EQ(DescribeModel(mOutput), all);
    EXPECT_EQ(Call(merge, {files[0], mOutput}), 0);
    EXPECT_EQ(DescribeModel(mOutput), first);
  }
}

TEST_F(MergeEntryPoints, MergesOneFileAGivenNumberOfTimes) {
  const std::string file = Plate("a.ryx", {"S"}, 1);
  const std::string once = MergedAsDatasets({file});
  for (const char* number : {"0", "1", "three", ""}) {
    EXPECT_EQ(Call(merge_n, {file, number, mOutput}), 0) << number;
    EXPECT_EQ(DescribeModel(mOutput), once) << number;
  }
  EXPECT_EQ(Call(merge_n, {file, " 3x", mOutput, "passed over"}), 0);
  EXPECT_EQ(DescribeModel(mOutput), MergedAsDatasets({file, file, file}));
}

TEST_F(MergeEntryPoints, SelectsResultsByKindAndName) {
  const auto build = [](const std::vector<std::pair<std::string, std::uint32_t>>& results) {
    return [results](Tree& tree) {
      auto& mesh = AddNode<Geometry>(tree, NodeTree::kRootId, "Mesh");
      for (const auto& [name, kind] : results) {
        mesh.AppendVariable(MakeVariable(name, kind, NumericArray::Of(Ramp(4, 1.0F))));
      }
      mesh.AppendVariable(MakeLinked("linked", {7, 9}));
      mesh.EditVariable(results.size()).mKind = 20;
      mesh.AppendVariable(MakeLinked("ahead", {2, 5}));  // the first input has no such result
      mesh.EditVariable(results.size() + 1).mKind = 20;
    };
  };
  const std::string first = Model("a.ryx", build({{"A", 12}}));
  const std::string second = Model("b.ryx", build({{"A", 12},
                                                   {"below", 11},
                                                   {"last", 28},
                                                   {"beyond", 29},
                                                   {"none", Geometry::kNoKind},
                                                   {"Node Ids", 15},
                                                   {"Node Ids of a part", 15},
                                                   {"Node IDs", 15},
                                                   {"Node Id", 15}}));
  EXPECT_EQ(Call(cae_merge, {first, second, mOutput}), 0);
  Tree merged(false);
  LoadTree(merged, mOutput);
  EXPECT_THAT(VariableTexts(*AsGeometry(merged.GetNodes().GetReqNode(2))),
              ElementsAre("A", "linked -> 7,9", "ahead -> 0,0", "A", "last", "Node IDs", "Node Id",
                          "linked -> 7,9", "ahead -> 2,5"));
  std::vector<float> values;
  AsGeometry(merged.GetNodes().GetReqNode(2))->GetVariables()[4].mValues.GetValues(values);
  EXPECT_EQ(values, Ramp(4, 1.0F));
}

TEST_F(MergeEntryPoints, RefusesFilesOfOtherStructure) {
  const std::string plate = Plate("a.ryx", {"S"}, 1);
  const std::string small =
      Model("small.ryx", [](Tree& tree) { AddNode<Group>(tree, NodeTree::kRootId, "Alone"); });
  const std::string other = Model("other.ryx", [](Tree& tree) {
    AddNode<Group>(tree, NodeTree::kRootId, "Mesh");
    AddNode<Group>(tree, NodeTree::kRootId, "Mesh");
    AddNode<Group>(tree, NodeTree::kRootId, "Mesh");
  });
  const std::string rootShape =
      Model("root.ryx", [](Tree& tree) { AddNode<Shape>(tree, NodeTree::kRootId, "Shape"); });
  ExpectError(cae_merge, {small, plate, mOutput}, "Element Not Found");
  ExpectError(cae_merge, {other, plate, mOutput}, "Node 4 of the first input is not a geometry");
  ExpectError(cae_merge_cs, {plate, rootShape, mOutput},
              "Node 1 of the first input carries nothing");
  EXPECT_THAT(mErrors, HasSubstr(rootShape));
  EXPECT_FALSE(std::filesystem::exists(mOutput));
}

TEST_F(MergeEntryPoints, TakesShapesBelowCutSections) {
  const auto build = [](const std::vector<std::string>& names) {
    return [names](Tree& tree) {
      const auto group = tree.GetNodes().GetNextId();
      AddNode<Group>(tree, NodeTree::kRootId, "Cut-Sections");
      AddNode<Group>(tree, NodeTree::kRootId, "Cut-Sections 2");
      for (const std::string& name : names) {
        for (const std::uint32_t parent : {group, group + 1}) {
          const auto shape = tree.GetNodes().GetNextId();
          AddNode<Shape>(tree, parent, name);
          AddNode<Geometry>(tree, shape, name);
        }
      }
    };
  };
  const std::string first = Model("a.ryx", build({}));
  const std::string second = Model("b.ryx", build({"b1", "b2"}));
  const std::string third = Model("c.ryx", build({"c1"}));
  EXPECT_EQ(Call(cae_merge_cs, {first, second, third, mOutput}), 0);
  EXPECT_EQ(DescribeModel(mOutput), DescribeModel(Model("expected.ryx", [&](Tree& tree) {
              build({})(tree);
              for (const char* name : {"b1", "b2", "c1"}) {
                const auto shape = tree.GetNodes().GetNextId();
                AddNode<Shape>(tree, 2, name);
                AddNode<Geometry>(tree, shape, name);
              }
            })));
}

TEST_F(MergeEntryPoints, CutSectionsKeepSharedValues) {
  const std::string first = Model("a.ryx", [](Tree& tree) {
    AddNode<Group>(tree, NodeTree::kRootId, "Cut-Sections");
    AddNode<Geometry>(tree, NodeTree::kRootId, "Mesh").AppendVariable(MakeCarrier("M", 1));
  });
  const auto build = [](Tree& tree) -> Geometry& {
    AddNode<Group>(tree, NodeTree::kRootId, "Cut-Sections");
    AddNode<Shape>(tree, 2, "First");
    AddNode<Geometry>(tree, 3, "First").AppendVariable(MakeCarrier("S", 70));
    AddNode<Shape>(tree, 2, "Second");
    return AddNode<Geometry>(tree, 5, "Second");
  };
  const std::string second = Model("b.ryx", [&](Tree& tree) {
    Geometry& geometry = build(tree);
    geometry.AppendVariable(MakeLinked("far", {4, 0}));
    geometry.EditVariable(0).mKind = 12;
    geometry.AppendVariable(MakeLinked("near", {6, 0}));
    geometry.AppendVariable(MakeLinked("lost", {3, 0}));  // a geometry in the first input
  });
  EXPECT_EQ(Call(cae_merge_cs, {first, second, mOutput}), 0);
  Tree merged(false);
  LoadTree(merged, mOutput);
  const Geometry& section = *AsGeometry(merged.GetNodes().GetReqNode(7));
  EXPECT_THAT(VariableTexts(section), ElementsAre("far", "near -> 7,0", "lost -> 0,0"));
  EXPECT_EQ(DescribeValues(section.GetVariables()[0]), DescribeValues(MakeCarrier("", 70)));
  const std::string other = Model("c.ryx", [&](Tree& tree) {
    build(tree);
    AddNode<Shape>(tree, 2, "Third");
    AddNode<Group>(tree, 7, "Group");
  });
  ExpectError(cae_merge_cs, {first, other, mOutput}, "Node 8 is not a geometry");
}

TEST_F(MergeEntryPoints, ReportsMissingArguments) {
  const char* const hole[] = {"caller", nullptr, "b.ryx", "c.ryx", "d.ryx", nullptr};
  const char* const lateHole[] = {"caller", "a.ryx", nullptr, "c.ryx", "d.ryx", nullptr};
  for (const EntryPoint merge : {cae_merge, cae_merge_cs, cae_merge_in_tree, cad_merge, merge_n}) {
    ExpectError(merge, {}, "Argument 1 is missing");
    for (const int argc : {-2147483647, -1, 0, 3}) {
      EXPECT_EQ(Call(merge, argc, nullptr), 2) << argc;
      EXPECT_THAT(mErrors, HasSubstr("Argument 1 is missing"));
    }
    EXPECT_EQ(Call(merge, 5, hole), 2);
    EXPECT_THAT(mErrors, HasSubstr("Argument 1 is missing"));
    EXPECT_EQ(Call(merge, 5, lateHole), 2);
    EXPECT_THAT(mErrors, HasSubstr("Argument 2 is missing"));
  }
  ExpectError(merge_n, {"a.ryx", "2"}, "Argument 3 is missing");
}

TEST_F(MergeEntryPoints, EqualMergesWriteEqualFilesAndNameRyxMerge) {
  const std::vector<std::string> files = {Plate("a.ryx", {"S"}, 1), Plate("b.ryx", {"S"}, 2)};
  SaveViewPointFile(mDir / "v.vpt", "round");
  std::vector<std::function<int()>> merges = {
      [&] { return merge_as_datasets(files, mOutput); },
      [&] { return merge_as_instances(files, mOutput, InstanceNaming::AutomaticSuffix); },
      [&] { return merge_viewpoints_with_ryx(files[0], {mDir / "v.vpt"}, mOutput); },
      [&] {
        return Call(merge_n, {files[0], "2", mOutput});
      }};
  for (const EntryPoint merge : {cae_merge, cae_merge_cs, cae_merge_in_tree, cad_merge}) {
    merges.push_back([this, merge, &files] { return Call(merge, {files[0], files[1], mOutput}); });
  }
  const ScopedEnvironment zone("TZ", "Asia/Tokyo");
  for (const auto& merge : merges) {
    const ScopedEnvironment date("SOURCE_DATE_EPOCH", "1700000000");
    ASSERT_EQ(merge(), 0);
    const std::string bytes = ReadFile(mOutput);
    ASSERT_EQ(merge(), 0);
    EXPECT_EQ(ReadFile(mOutput), bytes);
    Tree merged(false);
    LoadTree(merged, mOutput);
    ASSERT_EQ(merged.GetModifiers().size(), 2U);
    const ModifierInfo& entry = merged.GetModifiers().back();
    EXPECT_EQ(entry.mApplication + " " + entry.mApplicationVersion, "RyxMerge 2017 R1");
    EXPECT_EQ(entry.mDate, "Tue Nov 14 22:13:20 2023 UTC");
  }
  for (const char* unusable : {"today", "-1", "1.5", "1700000000 ", "99999999999999999999"}) {
    const ScopedEnvironment date("SOURCE_DATE_EPOCH", unusable);
    ExpectError(cad_merge, {files[0], files[1], mDir / "new.ryx"},
                "SOURCE_DATE_EPOCH is not a number of seconds");
    EXPECT_EQ(check_before_merge(files, {}, mOutput), 2);
  }
  const ScopedEnvironment date("SOURCE_DATE_EPOCH", "");
  EXPECT_EQ(check_before_merge(files, {}, mOutput), 0);
  EXPECT_FALSE(std::filesystem::exists(mDir / "new.ryx"));
}

TEST_F(MergeEntryPoints, RefusesAnOutputThatIsAnInput) {
  const std::vector<std::string> files = {Plate("a.ryx", {"S"}, 1), Plate("b.ryx", {"S"}, 2)};
  std::filesystem::create_hard_link(files[1], mDir / "other name.ryx");
  const std::string before = DescribeModel(files[0]) + DescribeModel(files[1]);
  for (const EntryPoint merge : {cae_merge, cae_merge_cs, cae_merge_in_tree, cad_merge}) {
    ExpectError(merge, {files[0]}, "is also an input");
    ExpectError(merge, {files[0], files[1], mDir / "other name.ryx"}, "is also an input");
  }
  ExpectError(merge_n, {files[0], "2", files[0]}, "is also an input");
  EXPECT_EQ(DescribeModel(files[0]) + DescribeModel(files[1]), before);
}

}  // namespace
}  // namespace QovRyx
