#include "Qov/Ryx/Merge.h"
#include "Qov/Ryx/Progress.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <sstream>
#include <stdexcept>

#include "support/Errors.h"
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

using Names = std::vector<std::string>;

class Merging : public testing::Test {
 protected:
  Merging() { mRequest.mOutput = mDir / "out.ryx"; }

  /// Writes a model and adds it to the inputs.
  template <class Build>
  void Add(const std::string& name, Build build) {
    std::filesystem::create_directories(std::filesystem::path(mDir / name).parent_path());
    Tree tree("Solver", "1", false);
    build(tree);
    SaveTree(tree, mDir / name);
    mRequest.mInputs.push_back(mDir / name);
  }
  void AddPlate(const std::string& name, const Names& results, std::uint32_t seed,
                std::size_t numNodes = 40) {
    Add(name, [&](Tree& tree) { BuildPlate(tree, results, seed, numNodes); });
  }
  MergeReport MergeAll() {
    mRequest.mSettings.mOverwrite = true;
    return Merge(mRequest);
  }
  /// Merges `inputs` into a file of its own.
  std::string MergeTo(const std::string& name, const Names& inputs) {
    MergeRequest request = mRequest;
    request.mInputs = inputs;
    request.mOutput = mDir / name;
    Merge(request);
    return request.mOutput;
  }
  Names ResultNames() {
    Tree tree(false);
    LoadTree(tree, mRequest.mOutput);
    Names names;
    ForEachGeometry(tree.GetNodes(), [&names](std::uint32_t, const Geometry& geometry) {
      for (const auto& result : geometry.GetVariables()) names.push_back(Unbarred(result.mName));
    });
    return names;
  }

  TempDir mDir;
  MergeRequest mRequest;
};

/// Returns the names and values of all results of the models, sorted, so that models with other
/// node ids and other links compare equal.
Names ValuesOf(const Names& paths) {
  Names texts;
  for (const std::string& path : paths) {
    Tree tree(false);
    LoadTree(tree, path);
    ForEachGeometry(tree.GetNodes(), [&](std::uint32_t, const Geometry& geometry) {
      for (const auto& result : geometry.GetVariables()) {
        std::ostringstream text;
        text << geometry.GetName() << ": " << Unbarred(result.mName) << ": ";
        Describe(text, result.mValues);
        texts.push_back(text.str());
      }
    });
  }
  std::sort(texts.begin(), texts.end());
  return texts;
}

TEST_F(Merging, ChoosesTheModeByTreeAndMesh) {
  using Edit = std::function<void(Tree&)>;
  const auto plate = [](std::size_t numNodes) {
    return [numNodes](Tree& tree) { BuildPlate(tree, {"S|1"}, 3, numNodes); };
  };
  const struct {
    const char* mCase;
    Edit mOther;
    std::string mDifference;  ///< Empty if the models are instances of one model.
  } cases[] = {
      {"other values and results",
       [](Tree& tree) {
         BuildPlate(tree, {"T|9", "U|8"}, 5);
       },
       ""},
      {"mesh of another instance",
       [&](Tree& tree) {
         plate(40)(tree);
         Geometry& mesh = *AsGeometry(tree.GetNodes().GetReqNode(PlateIds::kGeometry));
         mesh.AppendVariable(MakeLinked("Coordinates|2", {PlateIds::kGeometry, 0}));
         mesh.EditVariable(3).mKind = 0;
       },
       ""},
      {"mesh size", plate(41), "node 4 has another mesh: \"Connectivity\" of kind 4 with 41"},
      {"additional node",
       [&](Tree& tree) {
         plate(40)(tree);
         AddNode<Group>(tree, 1, "More");
       },
       "node 6 (Group \"More\") is additional"},
      {"node of another name", [](Tree& tree) { AddNode<Group>(tree, 1, "Sheet"); },
       "node 2 is Group \"Sheet\" instead of Group \"Plate\""},
      {"node of another type", [](Tree& tree) { AddNode<Shape>(tree, 1, "Plate"); },
       "node 2 is Shape \"Plate\" instead of Group \"Plate\""},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.mCase);
    mRequest.mInputs.clear();
    Add("a.ryx", plate(40));
    Add("b.ryx", test.mOther);
    const MergeReport report = MergeAll();
    const bool areInstances = test.mDifference.empty();
    EXPECT_EQ(report.mMode, areInstances ? MergeMode::Instances : MergeMode::Datasets);
    EXPECT_THAT(report.mReason, HasSubstr(areInstances ? "same meshes" : test.mDifference));
  }
}

TEST_F(Merging, NamesInstances) {
  const struct {
    const char* mCase;
    Names mFiles;
    std::vector<Names> mResults;
    MergedNames mNames;
    Names mParts;
    Names mFirst;  ///< Names of results of the geometry, from the beginning.
  } cases[] = {
      {"different instances are kept, and share the common results of their file",
       {"a.ryx", "b.ryx"},
       {{"S|1", "S|2", "M"}, {"S|3"}},
       MergedNames::Automatic,
       {"", ""},
       {"Coordinates|1", "Connectivity|1", "S|1", "S|2", "M|1", "Coordinates|2", "Connectivity|2",
        "M|2", "Coordinates|3", "Connectivity|3", "S|3"}},
      {"equal instances get stems",
       {"a.ryx", "b.ryx"},
       {{"S|1"}, {"S|1"}},
       MergedNames::Automatic,
       {"a", "b"},
       {"Coordinates|a 1", "Connectivity|a 1", "S|a 1", "Coordinates|b 1", "Connectivity|b 1",
        "S|b 1"}},
      {"a model without instances gets its stem, so that its results stay apart",
       {"a.ryx", "b.ryx"},
       {{"S|1"}, {"T"}},
       MergedNames::Automatic,
       {"a", "b"},
       {"Coordinates|a 1", "Connectivity|a 1", "S|a 1", "Coordinates|b", "Connectivity|b", "T|b"}},
      {"no instances get stems, and folders where stems are equal",
       {"x/p/run.ryx", "y/p/run.ryx", "z.ryx"},
       {{"S"}, {"S|"}, {}},
       MergedNames::Automatic,
       {"x/p/run", "y/p/run", "z"},
       {"Coordinates|x/p/run", "Connectivity|x/p/run", "S|x/p/run", "Coordinates|y/p/run",
        "Connectivity|y/p/run", "S|y/p/run", "Coordinates|z", "Connectivity|z"}},
      {"numbers begin where requested",
       {"a.ryx", "b.ryx"},
       {{"S|1"}, {}},
       MergedNames::Number,
       {"F7", "F8"},
       {"Coordinates|F7 1", "Connectivity|F7 1", "S|F7 1", "Coordinates|F8", "Connectivity|F8"}},
      {"no old part continues a number",
       {"a.ryx", "b.ryx"},
       {{"S|1 2", "S|x"}, {"S|2", "S| 2"}},
       MergedNames::Number,
       {"F7", "F8"},
       {"Coordinates|F7 1 2", "Connectivity|F7 1 2", "S|F7 1 2", "S|F7x", "Coordinates|F7x",
        "Connectivity|F7x", "Coordinates|F8  2", "Connectivity|F8  2", "S|F8 2", "S|F8  2",
        "Coordinates|F8 2", "Connectivity|F8 2"}},
      {"stems never combine to equal parts",
       {"a.ryx", "a b.ryx"},
       {{"S|b c"}, {"S|c"}},
       MergedNames::Stem,
       {"a", "a_b"},
       {"Coordinates|a b c", "Connectivity|a b c", "S|a b c", "Coordinates|a_b c",
        "Connectivity|a_b c", "S|a_b c"}},
      {"numbers of equal stems are not those of other stems",
       {"run.ryx", "r\x1Eun.ryx", "r_un.ryx", "run.ryx", "run(2).ryx"},
       {{}, {}, {}, {}, {}},
       MergedNames::Stem,
       {"run", "r_un", "r_un(2)", "run(3)", "run(2)"},
       {"Coordinates|run", "Connectivity|run", "Coordinates|r_un", "Connectivity|r_un",
        "Coordinates|r_un(2)", "Connectivity|r_un(2)", "Coordinates|run(3)", "Connectivity|run(3)",
        "Coordinates|run(2)", "Connectivity|run(2)"}},
      {"a name that exists is not given twice",
       {"a.ryx", "b.ryx"},
       {{"S", "S|1", "S|2", "T", "T|1"}, {"S|3"}},
       MergedNames::Keep,
       {"", ""},
       {"Coordinates|1", "Connectivity|1", "S", "S|1", "S|2", "T|2", "T|1", "Coordinates|2",
        "Connectivity|2", "Coordinates|3", "Connectivity|3", "S|3"}},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.mCase);
    mRequest.mInputs.clear();
    for (std::size_t i = 0; i != test.mFiles.size(); ++i) {
      AddPlate(test.mFiles[i], test.mResults[i], static_cast<std::uint32_t>(i));
    }
    mRequest.mNames = test.mNames;
    mRequest.mFirstNumber = 7;
    mRequest.mMode = MergeMode::Instances;
    EXPECT_EQ(MergeAll().mInstanceNames, test.mParts);
    EXPECT_EQ(ResultNames(), test.mFirst);
  }
}

/// Adds two geometries whose results are linked to each other, over the positions of common results
/// too, and names all results for the instance `name`.
void BuildLinked(Tree& tree, const std::string& name, std::uint32_t seed) {
  const auto values = [&](std::uint32_t start) { return NumericArray::Of(Count(5, seed + start)); };
  Geometry& left = AddNode<Geometry>(tree, NodeTree::kRootId, "Left");
  Geometry& right = AddNode<Geometry>(tree, NodeTree::kRootId, "Right");
  left.AppendVariable(MakeVariable("Node Ids|" + name, 6, values(10)));
  left.AppendVariable(MakeLinked("To itself's geometry|" + name, {2, 0}));
  left.AppendVariable(MakeLinked("Chain|" + name, {3, 1}));
  right.AppendVariable(MakeVariable("S|" + name, 12, values(20)));
  right.AppendVariable(MakeLinked("To the left|" + name, {2, 0}));
  right.AppendVariable(MakeLinked("To a later result|" + name, {3, 3}));
  right.AppendVariable(MakeVariable("T|" + name, 12, values(30)));
}

TEST_F(Merging, LinksLeadToTheSameValuesInEveryMode) {
  for (std::uint32_t i = 0; i != 3; ++i) {
    const std::string name = "i" + std::to_string(i);
    Add(name + ".ryx", [&](Tree& tree) { BuildLinked(tree, name, 100 * i); });
  }
  const Names expected = ValuesOf(mRequest.mInputs);
  for (const MergeMode mode : {MergeMode::Instances, MergeMode::Datasets}) {
    for (const bool share : {false, true}) {
      mRequest.mMode = mode;
      mRequest.mShare = share;
      MergeAll();
      EXPECT_EQ(ValuesOf({mRequest.mOutput}), expected) << static_cast<int>(mode) << share;
    }
  }
}

TEST_F(Merging, PartialMergesGiveTheMergeOfAllInputs) {
  mRequest.mShare = false;
  for (const std::size_t numParts : {2U, 7U}) {
    for (const bool isJoin : {false, true}) {
      SCOPED_TRACE(std::to_string(numParts) + (isJoin ? " datasets" : " instances"));
      mRequest.mInputs.clear();
      for (std::uint32_t i = 0; i != 2 * numParts; ++i) {
        const std::string name = "run" + std::to_string(i) + ".ryx";
        if (isJoin && i % 2 == 1) {
          Add(name, [i](Tree& tree) { BuildLinked(tree, "1", i); });
        } else {
          AddPlate(name, {"S|1", "S|2", "T"}, i, 10);
        }
      }
      const Names all = mRequest.mInputs;
      MergeAll();
      const std::string expected = DescribeModel(mRequest.mOutput);
      Names parts;
      for (std::size_t i = 0; i != numParts; ++i) {
        parts.push_back(MergeTo("part" + std::to_string(i), {all[2 * i], all[2 * i + 1]}));
      }
      mRequest.mJoin = isJoin;
      if (!isJoin) mRequest.mNames = MergedNames::Keep;
      EXPECT_EQ(DescribeModel(MergeTo("joined.ryx", parts)), expected);
      if (isJoin) {  // a model that is not a dataset merge takes its place among the others
        Names mixed = {all[0], all[1]};
        mixed.insert(mixed.end(), parts.begin() + 1, parts.end());
        EXPECT_EQ(DescribeModel(MergeTo("joined.ryx", mixed)), expected);
      }
      mRequest.mJoin = false;
      mRequest.mNames = MergedNames::Automatic;
    }
  }
}

/// A dangling link in a part may lead to a result when the parts are joined.
TEST_F(Merging, PartsGiveTheModelOfOneMerge) {
  for (std::uint32_t i = 0; i != 5; ++i) {
    Add("i" + std::to_string(i), [i](Tree& tree) {
      BuildLinked(tree, "1", i);
      for (const std::uint32_t position : {9, 99}) {
        dynamic_cast<Geometry&>(*tree.GetNodes().GetReqNode(2).mData)
            .AppendVariable(MakeLinked("Dangling|1", {3, position}));
      }
    });
  }
  const Names all = mRequest.mInputs;
  mRequest.mSettings.mOverwrite = true;
  for (const MergeMode mode : {MergeMode::Instances, MergeMode::Datasets}) {
    mRequest.mMode = mode;
    mRequest.mNames = MergedNames::Number;
    mRequest.mFirstNumber = 1;
    const std::string expected = DescribeModel(MergeTo("one.ryx", all));
    mRequest.mPartOf = all[0];
    Names parts;
    for (const auto& [first, last] : {std::pair(0, 2), std::pair(2, 3), std::pair(3, 5)}) {
      mRequest.mFirstNumber = 1 + static_cast<std::uint64_t>(first);
      parts.push_back(
          MergeTo("part" + std::to_string(first), {all.begin() + first, all.begin() + last}));
    }
    mRequest.mPartOf.clear();
    mRequest.mJoinParts = true;
    EXPECT_EQ(DescribeModel(MergeTo("joined.ryx", parts)), expected);
    mRequest.mJoinParts = false;
  }
}

TEST_F(Merging, TakesTheRequestedViews) {
  const auto plateWithPath = [](const std::string& path, std::size_t numViews) {
    return [=](Tree& tree) {
      BuildPlate(tree, {"S"}, 1);
      AddViewPointPath(tree, path, numViews);
      tree.GetViewPoint().mName = "current " + path;
    };
  };
  Add("a.ryx", plateWithPath("A", 2));
  Add("b.ryx", plateWithPath("B", 1));
  AddPlate("c.ryx", {"S"}, 2);
  const struct {
    MergedViews mViews;
    bool mHasFile;
    Names mInputs;
    Names mPaths;
    std::uint64_t mLeftOut;  ///< Current views, and view points of paths.
    std::string mCurrent;
  } cases[] = {
      {MergedViews::First, false, {"a.ryx", "b.ryx"}, {"A"}, 2, "current A"},
      {MergedViews::First, true, {"c.ryx", "b.ryx"}, {"V"}, 2, "no name"},
      {MergedViews::First, true, {"a.ryx", "b.ryx"}, {"A", "V"}, 3, "no name"},
      {MergedViews::All, false, {"a.ryx", "b.ryx", "c.ryx"}, {"A", "B"}, 1, "current A"},
      {MergedViews::All, false, {"c.ryx", "b.ryx"}, {"B"}, 0, "current B"},
      {MergedViews::None, false, {"a.ryx", "b.ryx"}, {}, 5, "no name"},
      {MergedViews::None, true, {"a.ryx", "b.ryx"}, {"V"}, 5, "no name"},
  };
  SaveViewPointFile(mDir / "v.vpt", "V");
  for (const auto& test : cases) {
    for (const MergeMode mode : {MergeMode::Instances, MergeMode::Datasets}) {
      mRequest.mInputs.clear();
      if (test.mHasFile) mRequest.mInputs.push_back(mDir / "v.vpt");
      for (const std::string& input : test.mInputs) mRequest.mInputs.push_back(mDir / input);
      mRequest.mMode = mode;
      mRequest.mViews = test.mViews;
      EXPECT_EQ(MergeAll().mViewsLeftOut, test.mLeftOut);
      Tree tree(false);
      LoadTree(tree, mRequest.mOutput);
      Names paths;
      for (const ViewPointPath& path : tree.GetViewPointPaths()) paths.push_back(path.mName);
      EXPECT_EQ(paths, test.mPaths);
      EXPECT_EQ(tree.GetViewPoint().mName, test.mCurrent);
    }
  }
}

TEST_F(Merging, GivesResultsOfInstancesTheTimesOfTheirGroups) {
  const auto plateAt = [](float time, bool hasOwn) {
    return [=](Tree& tree) {
      BuildPlate(tree, {"S|1", "T"}, 1);
      dynamic_cast<Group&>(*tree.GetNodes().GetReqNode(PlateIds::kGroup).mData)
          .mAttributes["time"] = time;
      Geometry& geometry = *AsGeometry(tree.GetNodes().GetReqNode(PlateIds::kGeometry));
      const std::size_t own = *geometry.FindVariable(Barred("S|1"));
      if (hasOwn) geometry.EditVariable(own).mAttributes["time"] = 9U;
    };
  };
  Add("a.ryx", plateAt(0.25F, false));
  Add("b.ryx", plateAt(0.5F, true));
  const struct {
    Names mInputs;
    Names mTimes;
  } cases[] = {
      {{"a.ryx"}, {"S|1 ", "T "}},
      {{"a.ryx", "b.ryx"}, {"S|a 1 0.25", "T|a 1 0.25", "S|b 1 9", "T|b 1 0.5"}},
  };
  for (const auto& test : cases) {
    mRequest.mInputs.clear();
    for (const std::string& input : test.mInputs) mRequest.mInputs.push_back(mDir / input);
    EXPECT_THAT(MergeAll().mNotes,
                testing::Not(testing::Contains(testing::HasSubstr("attributes"))));
    Tree tree(false);
    LoadTree(tree, mRequest.mOutput);
    Names times;
    const auto& id = PlateIds::kGeometry;
    for (const auto& result : AsGeometry(tree.GetNodes().GetReqNode(id))->GetVariables()) {
      if (result.mName[0] == 'C') continue;  // coordinates and connectivity
      std::ostringstream text;
      text << Unbarred(result.mName) << ' ';
      for (const auto& [name, value] : result.mAttributes) {
        if (name == "time") std::visit([&text](const auto& time) { text << time; }, value);
      }
      times.push_back(text.str());
    }
    EXPECT_EQ(times, test.mTimes);
  }
}

TEST_F(Merging, CountsWhatInstancesLeaveOut) {
  AddPlate("a.ryx", {"S"}, 1);
  Add("b.ryx", [](Tree& tree) {
    BuildPlate(tree, {"S"}, 2);
    dynamic_cast<Group&>(*tree.GetNodes().GetReqNode(PlateIds::kGroup).mData).mAttributes["x"] = 1U;
    AddNode<Group>(tree, NodeTree::kRootId, "More");
    AddNode<Geometry>(tree, NodeTree::kRootId, "Empty");
  });
  mRequest.mMode = MergeMode::Instances;
  mRequest.mNames = MergedNames::Keep;
  EXPECT_THAT(
      MergeAll().mNotes,
      ElementsAre(HasSubstr("2 nodes of further inputs are left out"),
                  HasSubstr("1 group of a further input has other attributes"),
                  HasSubstr("1 shape of a further input has another material"),
                  HasSubstr("1 node with sets of a further input is left out"),
                  HasSubstr("3 results have the names of other results of their geometries"),
                  HasSubstr("6 results belong to no instance")));
}

/// Cancels a merge before an input, or refuses its output.
class Refusal : public MergeListener {
 public:
  explicit Refusal(std::size_t input) : mInput(input) {}
  bool BeforeInput(std::size_t number, const std::string& /*path*/) override {
    return number != mInput;
  }
  void CheckOutput(const std::string& path) override {
    EXPECT_FALSE(DescribeModel(path).empty());
    throw std::runtime_error("refused");
  }

 private:
  std::size_t mInput;
};

/// Cancels every task as soon as it has made progress.
class Impatience : public ProgressListener {
 public:
  void Start(std::uint64_t /*numBytes*/) override {}
  void Advance(std::uint64_t /*numBytes*/) override { mIsCancelled = true; }
  void Finish() override {}
  bool IsCancelled() const override { return mIsCancelled; }

 private:
  bool mIsCancelled = false;
};

TEST_F(Merging, RefusesWithoutATrace) {
  AddPlate("a.ryx", {"S"}, 1);
  AddPlate("b.ryx", {"S"}, 2);
  const MergeRequest good = mRequest;
  Add("c.ryx", [](Tree& tree) { BuildLinked(tree, "1", 0); });
  WriteFile(mDir / "bad.ryx", "not a model");
  const struct {
    const char* mText;
    ErrorType mType;
    std::function<void(MergeRequest&)> mEdit;
  } cases[] = {
      {"exists", ErrorType::ElementExists, [](auto& r) { r.mSettings.mOverwrite = false; }},
      {"is also an input", ErrorType::MiscellaneousError,
       [&](auto& r) { r.mInputs.push_back(r.mOutput); }},
      {"There is no model", ErrorType::ElementNotFound, [](auto& r) { r.mInputs.clear(); }},
      {"Only a merge as datasets can join", ErrorType::MiscellaneousError,
       [](auto& r) {
         r.mMode = MergeMode::Instances;
         r.mJoin = true;
       }},
      {"is too large for 2 models", ErrorType::OutOfBounds,
       [](auto& r) {
         r.mNames = MergedNames::Number;
         r.mFirstNumber = ~std::uint64_t{0};
       }},
      {"is not a Ryx file", ErrorType::FormatNotSupported,
       [&](auto& r) { r.mInputs.push_back(mDir / "bad.ryx"); }},
      {"The results of node 2 (Geometry \"Left\") have no place", ErrorType::MismatchError,
       [&](auto& r) {
         r.mMode = MergeMode::Instances;
         r.mInputs.push_back(mDir / "c.ryx");
       }},
  };
  const auto listFiles = [&] {
    Names names;
    for (const auto& entry : std::filesystem::directory_iterator(mDir.GetPath())) {
      names.push_back(entry.path());
    }
    return names;
  };
  WriteFile(good.mOutput, "old");
  const Names before = listFiles();
  for (const auto& test : cases) {
    mRequest = good;
    mRequest.mSettings.mOverwrite = true;
    test.mEdit(mRequest);
    ExpectError(test.mType, test.mText, [this] { Merge(mRequest); });
    EXPECT_EQ(ReadFile(good.mOutput), "old") << test.mText;
    EXPECT_EQ(listFiles(), before) << test.mText;
  }
  mRequest = good;
  mRequest.mSettings.mOverwrite = true;
  Refusal atSecond(1);
  ExpectError(ErrorType::MiscellaneousError, "The merge was cancelled before",
              [&] { Merge(mRequest, &atSecond); });
  Refusal atEnd(9);
  EXPECT_THROW(Merge(mRequest, &atEnd), std::runtime_error);
  for (const bool share : {true, false}) {  // cancelled while arrays are compared, and while saved
    Impatience impatience;
    mRequest.mShare = share;
    SetProgressListener(&impatience);
    ExpectError(ErrorType::MiscellaneousError, "The task was cancelled", [&] { Merge(mRequest); });
    SetProgressListener(nullptr);
  }
  EXPECT_EQ(ReadFile(good.mOutput), "old");
  EXPECT_EQ(listFiles(), before);
}

TEST_F(Merging, GivesTheSameBytesForAnyNumberOfThreads) {
  const ScopedEnvironment epoch("SOURCE_DATE_EPOCH", "1000");
  AddPlate("a.ryx", {"S"}, 1, 100000);
  AddPlate("b.ryx", {"S"}, 2, 100000);
  mRequest.mSettings.mThreads = 1;
  MergeAll();
  const std::string expected = ReadFile(mRequest.mOutput);
  mRequest.mSettings.mThreads = 3;
  const MergeReport report = MergeAll();
  EXPECT_TRUE(ReadFile(mRequest.mOutput) == expected);
  EXPECT_EQ(report.mOutputBytes, expected.size());
  Tree tree(false);
  LoadTree(tree, mRequest.mOutput);
  EXPECT_EQ(tree.GetModifiers().back().mApplication, "RyxMerge");
  EXPECT_EQ(tree.GetModifiers().back().mApplicationVersion, "2017 R1");
}

}  // namespace
}  // namespace QovRyx
