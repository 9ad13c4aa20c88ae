#include <gtest/gtest.h>

#include "support/ModelCompare.h"
#include "support/RandomModel.h"
#include "support/TempDir.h"

namespace Qov::Test {
namespace {

using namespace QovRyx;

/// Linked variables have the values of others once they are loaded, and none before.
void DropLinkedValues(Tree& tree) {
  ForEachGeometry(tree.GetNodes(), [](std::uint32_t, Geometry& geometry) {
    for (std::size_t i = 0; i < geometry.GetVariables().size(); ++i) {
      if (geometry.GetVariables()[i].mLinked) geometry.EditVariable(i).mValues = {};
    }
  });
}

class RandomModelTest : public testing::TestWithParam<std::uint32_t> {};

TEST_P(RandomModelTest, ComesBackFromAFileAsItWas) {
  const TempDir dir;
  Tree original("maker", "1", false);
  RandomModel(GetParam()).Fill(original);
  SaveTree(original, dir / "first.ryx");

  Tree loaded(false);
  LoadTree(loaded, dir / "first.ryx");
  SaveTree(loaded, dir / "second.ryx");
  EXPECT_EQ(DescribeModel(dir / "second.ryx"), DescribeModel(dir / "first.ryx"));
  DropLinkedValues(loaded);
  EXPECT_EQ(DescribeModel(loaded), DescribeModel(original));
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomModelTest, testing::Range(1U, 41U));

}  // namespace
}  // namespace Qov::Test
