#include "merge/LinkForest.h"

#include <gtest/gtest.h>

#include <random>

namespace QovRyx {
namespace {

bool ReachesStepByStep(const std::vector<LinkForest::Vertex>& parents, LinkForest::Vertex from,
                       LinkForest::Vertex to) {
  while (from != to && from != LinkForest::kNone) from = parents[from];
  return from == to;
}

TEST(LinkForest, ReachesAllAncestors) {
  std::mt19937 random(1);
  for (const LinkForest::Vertex size : {2U, 5U, 60U}) {
    LinkForest forest;
    std::vector<LinkForest::Vertex> parents(size + 1, LinkForest::kNone);
    for (LinkForest::Vertex i = 1; i <= size; ++i) EXPECT_EQ(forest.Add(), i);
    for (int i = 0; i != 20000; ++i) {
      const auto child = static_cast<LinkForest::Vertex>(1 + random() % size);
      const auto other = static_cast<LinkForest::Vertex>(1 + random() % size);
      const bool reaches = ReachesStepByStep(parents, other, child);
      ASSERT_EQ(forest.Reaches(other, child), reaches) << size << ", step " << i;
      if (reaches && random() % 4 != 0) continue;
      forest.Detach(child);
      parents[child] = LinkForest::kNone;
      if (reaches) continue;
      forest.Attach(child, other);
      parents[child] = other;
    }
  }
}

TEST(LinkForest, MovesLongChainsInLittleTime) {
  constexpr LinkForest::Vertex kSize = 200000;
  LinkForest forest;
  for (LinkForest::Vertex i = 1; i <= kSize; ++i) {
    forest.Add();
    if (i > 1) forest.Attach(i - 1, i);
  }
  const LinkForest::Vertex left = forest.Add();
  const LinkForest::Vertex right = forest.Add();
  forest.Attach(kSize, left);
  for (LinkForest::Vertex i = 1; i <= kSize; ++i) {
    forest.Detach(kSize);
    forest.Attach(kSize, i % 2 == 0 ? left : right);
    ASSERT_EQ(forest.Reaches(i, left), i % 2 == 0);
  }
}

}  // namespace
}  // namespace QovRyx
