#include "Qov/Ryx/FileArrangement.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstddef>
#include <random>

#include "merge/IntroSort.h"

namespace QovRyx {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

TEST(ArrangeFiles, OrdersASeriesByNumberAndKeepsOtherFiles) {
  EXPECT_THAT(arrange_files({}), IsEmpty());
  EXPECT_THAT(arrange_files({"run2.ryx", "run10.ryx", "run1.ryx"}),
              ElementsAre("run1.ryx", "run2.ryx", "run10.ryx"));
  EXPECT_THAT(arrange_files({"b2.ryx", "view.vpt", "b1.ryx"}),
              ElementsAre("b1.ryx", "b2.ryx", "view.vpt"));
  EXPECT_THAT(arrange_files({"b.ryx", "a.ryx", "c1.ryx"}), ElementsAre("b.ryx", "a.ryx", "c1.ryx"));
  EXPECT_THAT(arrange_files({"9", "8.ryx", "a2.ryx.bak", "a1.ryx"}),
              ElementsAre("9", "8.ryx", "a1.ryx", "a2.ryx.bak"));
}

TEST(ArrangeFiles, ComparesNumbersUpTo64Bits) {
  EXPECT_THAT(arrange_files({"r01.ryx", "r1.ryx", "r000.ryx"}),
              ElementsAre("r000.ryx", "r01.ryx", "r1.ryx"));
  EXPECT_THAT(
      arrange_files({"r99999999999999999999999", "r18446744073709551615", "r18446744073709551614"}),
      ElementsAre("r18446744073709551614", "r99999999999999999999999", "r18446744073709551615"));
}

TEST(ArrangeFiles, KeepsEveryFileOfAMixedList) {
  std::mt19937 random(1);
  std::vector<std::string> paths;
  for (std::size_t i = 0; i != 3000; ++i) {
    const std::string stem = i % 3 == 0 ? "view" + std::to_string(i) + "x" : "run";
    paths.push_back(stem + std::to_string(random() % 500) + ".ryx");
  }
  std::vector<std::string> arranged = arrange_files(paths);
  std::sort(paths.begin(), paths.end());
  std::sort(arranged.begin(), arranged.end());
  EXPECT_EQ(arranged, paths);
}

/// Compares by the key only; the tag identifies equal elements.
struct Item {
  int mKey;
  std::size_t mTag;
  bool operator<(const Item& other) const { return mKey < other.mKey; }
  bool operator==(const Item& other) const = default;
};

void PrintTo(const Item& item, std::ostream* out) { *out << item.mKey << "/" << item.mTag; }

void ExpectStandardOrder(const std::vector<int>& keys) {
  std::vector<Item> items;
  for (const int key : keys) items.push_back({key, items.size()});
  std::vector<Item> expected = items;
  std::sort(expected.begin(), expected.end());
  IntroSort<Item>(items).Run();
  EXPECT_THAT(items, ElementsAreArray(expected));
}

TEST(IntroSort, OrdersEqualElementsLikeTheStandardSort) {
  std::mt19937 random(2);
  for (const std::size_t size : {1U, 2U, 15U, 16U, 17U, 18U, 33U, 100U, 5000U}) {
    for (const unsigned numKeys : {1U, 2U, 7U, 100000U}) {
      std::vector<int> keys(size);
      for (int& key : keys) key = static_cast<int>(random() % numKeys);
      ExpectStandardOrder(keys);
      std::sort(keys.begin(), keys.end());
      ExpectStandardOrder(keys);
      std::reverse(keys.begin(), keys.end());
      ExpectStandardOrder(keys);
    }
  }
}

/// Chooses its keys during the sort so that every pivot is nearly the smallest element, which is
/// the worst case of quicksort.
struct Adversary {
  std::vector<int>* mKeys;
  int* mNumSolid;
  std::size_t mTag;

  bool operator<(const Adversary& other) const {
    int& left = (*mKeys)[mTag];
    int& right = (*mKeys)[other.mTag];
    if (left == kGas && right == kGas) (mTag % 2 == 0 ? left : right) = (*mNumSolid)++;
    return left < right;
  }
  static constexpr int kGas = 1 << 30;
};

TEST(IntroSort, FallsBackToHeapSortLikeTheStandardSort) {
  constexpr std::size_t kSize = 4000;
  std::vector<int> keys(kSize, Adversary::kGas);
  int numSolid = 0;
  std::vector<Adversary> items;
  for (std::size_t i = 0; i != kSize; ++i) items.push_back({&keys, &numSolid, i});
  IntroSort<Adversary>(items).Run();
  for (int& key : keys) key /= 2;  // makes pairs of equal keys
  ExpectStandardOrder(keys);
}

}  // namespace
}  // namespace QovRyx
