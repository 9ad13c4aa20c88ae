#include "Qov/Ryx/OutputSettings.h"

#include <gtest/gtest.h>

#include <tuple>

#include "model/StreamNames.h"
#include "support/Errors.h"
#include "support/Files.h"
#include "support/ModelCompare.h"
#include "support/RandomModel.h"
#include "support/ScopedEnvironment.h"
#include "support/Streams.h"
#include "support/TempDir.h"

namespace Qov::Test {
namespace {

using namespace QovRyx;

class OutputSettingsTest : public testing::Test {
 protected:
  OutputSettingsTest() { SavePlate(mDir / "plate.ryx", {"Stress", "Strain"}, 1, 20000); }

  /// Saves the model and returns the bytes of the file.
  std::string Save(const OutputSettings& settings) {
    Tree tree(false);
    LoadTree(tree, mDir / "plate.ryx");
    tree.Save(mDir / "out.ryx", "", settings);
    EXPECT_EQ(DescribeModel(mDir / "out.ryx"), DescribeModel(tree));
    return ReadFile(mDir / "out.ryx");
  }

  const ScopedEnvironment mDate{"SOURCE_DATE_EPOCH", "1"};
  TempDir mDir;
};

TEST_F(OutputSettingsTest, ChangeTheStoredFormExceptTheThreads) {
  const std::string usual = Save({});
  EXPECT_GT(Save({.mLevel = 1}).size(), usual.size());

  const std::string small = Save({.mBlockSize = 1024});
  EXPECT_NE(small, usual);
  for (const unsigned threads : {1U, 3U, 256U}) {
    EXPECT_EQ(Save({.mBlockSize = 1024, .mThreads = threads}), small) << threads;
  }
  const ScopedEnvironment blockSize("TELMORAX_MAX_RYX_BLOCK_SIZE", "1024");
  EXPECT_EQ(Save({}), small);
  EXPECT_EQ(Save({.mBlockSize = 200U << 20}), usual);

  Tree tree(false);
  LoadTree(tree, mDir / "plate.ryx");
  SaveTree(tree, mDir / "out.ryx");
  EXPECT_EQ(Save({.mCompressor = QovJbf::Compressor::Zlib}), ReadFile(mDir / "out.ryx"));
}

TEST_F(OutputSettingsTest, HeavyItemsAreSavedInTheOrderOfTheInputs) {
  const auto heavy = [this](const char* name) { return ReadStreams(mDir / name)[kHeavyData]; };
  for (const char* name : {"a.ryx", "b.ryx"}) {
    Tree model(false);
    RandomModel(name[0]).Fill(model);
    SaveTree(model, mDir / name);
  }
  Tree tree(false);
  MakeMergeRoot(tree);
  for (const char* name : {"a.ryx", "b.ryx"}) MergeFile(tree, mDir / name);
  tree.Save(mDir / "out.ryx", "", {.mBlockSize = 1024});
  EXPECT_EQ(DescribeModel(mDir / "out.ryx"), DescribeModel(tree));
  EXPECT_TRUE(heavy("out.ryx") == heavy("a.ryx") + heavy("b.ryx"));
}

/// A reader in the order of the tree would decompress a large block again for each geometry.
TEST_F(OutputSettingsTest, LargeBlocksOfManyInputsAreSavedInTheOrderOfTheTree) {
  Tree tree(false);
  Tree second(false);
  for (const auto& [name, start, loaded] :
       {std::tuple("a.ryx", 0.F, &tree), std::tuple("b.ryx", 1.F, &second)}) {
    Tree model(false);
    for (int i = 0; i < 10; ++i) {
      AddNode<Geometry>(model, 1, "part")
          .AppendVariable(MakeVariable(
              "x", 12, NumericArray::Of(Ramp(1000, start + 2 * static_cast<float>(i)))));
    }
    SaveTree(model, mDir / name);
    LoadTree(*loaded, mDir / name);
  }
  ForEachGeometry(tree.GetNodes(), [&second](std::uint32_t id, Geometry& geometry) {
    geometry.AppendVariable(AsGeometry(second.GetNodes().GetReqNode(id))->GetVariables()[0]);
  });
  const auto heavy = [this](const char* name) { return ReadStreams(mDir / name)[kHeavyData]; };
  SaveTree(tree, mDir / "by tree.ryx");
  tree.Save(mDir / "out.ryx", "", {.mBlockSize = 1U << 20});
  EXPECT_TRUE(heavy("out.ryx") == heavy("by tree.ryx"));
  tree.Save(mDir / "out2.ryx", "", {.mBlockSize = 4000});  // an array each
  EXPECT_TRUE(heavy("out2.ryx") == heavy("a.ryx") + heavy("b.ryx"));
}

TEST_F(OutputSettingsTest, ImpossibleValuesAreRefusedBeforeAnythingIsWritten) {
  const auto refuses = [this](const OutputSettings& settings, const std::string& text) {
    ExpectError(ErrorType::OutOfBounds, text, [&] { Save(settings); });
    EXPECT_FALSE(std::filesystem::exists(mDir / "out.ryx"));
  };
  refuses({.mLevel = 0}, "The compression level must be from 1 to 9, not 0");
  refuses({.mLevel = -1}, "not -1");
  refuses({.mLevel = 10}, "not 10");
  refuses({.mBlockSize = 1023},
          "The block size in bytes must be from 1024 to 4294967294, not 1023");
  refuses({.mBlockSize = 4294967295}, "not 4294967295");
  refuses({.mThreads = 257}, "The number of threads must be from 0 to 256, not 257");
}

}  // namespace
}  // namespace Qov::Test
