#include <gtest/gtest.h>

#include "support/ModelCompare.h"
#include "support/RandomModel.h"
#include "support/ScopedEnvironment.h"
#include "support/TempDir.h"

namespace Qov::Test {
namespace {

using namespace QovRyx;

/// Removes the values that linked variables get from others when a file is loaded.
void DropLinkedValues(Tree& tree) {
  ForEachGeometry(tree.GetNodes(), [](std::uint32_t, Geometry& geometry) {
    for (std::size_t i = 0; i < geometry.GetVariables().size(); ++i) {
      if (geometry.GetVariables()[i].mLink.IsLinked()) geometry.EditVariable(i).mValues = {};
    }
  });
}

class RandomModelTest : public testing::TestWithParam<std::uint32_t> {};

TEST_P(RandomModelTest, IsUnchangedAfterSavingAndLoading) {
  const TempDir dir;
  Tree original("maker", "1", false);
  RandomModel(GetParam()).Fill(original);
  for (const char* limit : {"200", "3000", "100000"}) {
    const ScopedEnvironment blockSize("TELMORAX_MAX_RYX_BLOCK_SIZE", limit);
    std::string path = dir / "0";
    SaveTree(original, path);
    const std::string expected = DescribeModel(path);
    for (const char* copiesBlocks : {"0", "1", "1"}) {
      const ScopedEnvironment copy("RYXMERGE_COPY_BLOCKS", copiesBlocks);
      Tree loaded(false);
      LoadTree(loaded, path);
      path += "1";
      SaveTree(loaded, path);
      EXPECT_EQ(DescribeModel(path), expected) << path << " " << limit;
      DropLinkedValues(loaded);
      EXPECT_EQ(DescribeModel(loaded), DescribeModel(original));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomModelTest, testing::Range(1U, 41U));

}  // namespace
}  // namespace Qov::Test
