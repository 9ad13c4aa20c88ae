#include "Qov/Ryx/Merge.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <functional>
#include <map>

#include "Qov/Ryx/ValueOwners.h"
#include "support/Errors.h"
#include "support/Files.h"
#include "support/ModelBuilder.h"
#include "support/ModelCompare.h"
#include "support/ScopedEnvironment.h"
#include "support/TempDir.h"

namespace QovRyx {
namespace {

using namespace Qov::Test;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

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

/// Returns the values of each result by geometry and name, so that models with other links compare
/// equal.
std::map<std::string, std::string> ValuesByName(const std::string& path) {
  Tree tree(false);
  LoadTree(tree, path);
  std::map<std::string, std::string> values;
  ForEachGeometry(tree.GetNodes(), [&](std::uint32_t id, const Geometry& geometry) {
    for (const auto& result : geometry.GetVariables()) {
      std::ostringstream text;
      Describe(text, result.mValues);
      values[std::to_string(id) + ":" + Unbarred(result.mName)] += text.str();
    }
  });
  return values;
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
       {"Coordinates|F71", "Connectivity|F71", "S|F71", "Coordinates|F8", "Connectivity|F8"}},
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

}  // namespace
}  // namespace QovRyx
