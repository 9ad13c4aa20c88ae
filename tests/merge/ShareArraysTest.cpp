#include "merge/ShareArrays.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "Qov/Ryx/ValueOwners.h"
#include "model/HeavyPass.h"
#include "model/LinkFollower.h"
#include "model/StreamNames.h"
#include "model/TreeSaver.h"
#include "support/Errors.h"
#include "support/Files.h"
#include "support/ModelCompare.h"
#include "support/OldFile.h"
#include "support/RandomModel.h"
#include "support/Streams.h"
#include "support/TempDir.h"

namespace Qov::Test {
namespace {

using namespace QovRyx;
using testing::ElementsAre;

/// Describes what a reader gets for each result that has values, whether it is linked or not.
std::string DescribeResults(const Tree& tree) {
  std::ostringstream out;
  LinkFollower<Geometry::VarStruct> follower = FollowLinks(tree.GetNodes());
  const ValueOwners owners(tree.GetNodes());
  ForEachGeometry(tree.GetNodes(), [&](std::uint32_t id, const Geometry& geometry) {
    for (Geometry::VarStruct result : geometry.GetVariables()) {
      out << id << " high byte " << result.mKindHighByte << (owners.HoldUnsigned(result) ? "u" : "")
          << ":";
      if (const Geometry::VarStruct* owner = follower.FindOwner(result)) {
        result.TakeValuesOf(*owner);
      }
      Describe(out, result);
    }
  });
  return out.str();
}

constexpr std::size_t kNumValues = 1000;
constexpr std::uint64_t kSize = kNumValues * 4;

class ShareArraysTest : public testing::Test {
 protected:
  /// Adds a geometry with results of these values.
  static Geometry& AddGeometry(Tree& tree, const std::vector<NumericArray>& arrays) {
    Geometry& geometry = AddNode<Geometry>(tree, 1, "mesh");
    for (const NumericArray& array : arrays) {
      geometry.AppendVariable(MakeVariable(
          std::string(1, static_cast<char>('a' + geometry.GetVariables().size())), 12, array));
    }
    return geometry;
  }
  static NumericArray Values(float start) { return NumericArray::Of(Ramp(kNumValues, start)); }

  /// Returns `count` different arrays, `times` times.
  static std::vector<NumericArray> Repeat(int times, int count) {
    std::vector<NumericArray> arrays;
    for (int i = 0; i < times * count; ++i) arrays.push_back(Values(static_cast<float>(i % count)));
    return arrays;
  }

  /// Saves and loads a model whose results have these values, in blocks of two arrays.
  void LoadInBlocksOfTwo(const std::vector<NumericArray>& arrays) {
    Tree model(false);
    AddGeometry(model, arrays);
    model.Save(mDir / "in.ryx", "", {.mBlockSize = 2 * kSize});
    LoadTree(mTree, mDir / "in.ryx");
  }

  /// Saves and loads a model, saves it with shared arrays, and expects that a reader gets the same
  /// from the tree and from the saved file.
  SharedArrays Share(Tree& model, const SearchLimits& limits = {}) {
    SaveTree(model, mDir / "in.ryx");
    Tree same(false);
    for (Tree* tree : {&mTree, &same}) LoadTree(*tree, mDir / "in.ryx");
    return ShareLoaded(DescribeResults(same), limits);
  }
  SharedArrays ShareLoaded(const std::string& before, const SearchLimits& limits = {}) {
    const SharedArrays shared = SaveShared(mTree, limits);
    EXPECT_EQ(DescribeResults(mTree), before);
    Tree saved(false);
    LoadTree(saved, mDir / "out.ryx");
    EXPECT_EQ(DescribeResults(saved), before);
    return shared;
  }
  SharedArrays SaveShared(Tree& tree, const SearchLimits& limits = {}, unsigned threads = 1) {
    SharingSaver saver(limits);
    SaveWith(saver, tree, mDir / "out.ryx", "", {.mBlockSize = 2000, .mThreads = threads});
    return saver.GetShared();
  }
  std::uint64_t GetHeavySize() { return ReadStreams(mDir / "out.ryx")[kHeavyData].size(); }
  std::vector<std::string> Texts(std::uint32_t id) {
    return VariableTexts(*AsGeometry(mTree.GetNodes().GetReqNode(id)));
  }

  TempDir mDir;
  Tree mTree{false};
};

/// The parameter is the number of arrays that are kept in memory.
class KeptArraysTest : public ShareArraysTest, public testing::WithParamInterface<std::uint64_t> {};
INSTANTIATE_TEST_SUITE_P(Arrays, KeptArraysTest, testing::Values(0, 1, 3, 100));

TEST_F(ShareArraysTest, LinksLeadToTheFirstResultInTheOrderOfSave) {
  Tree model(false);
  Geometry& first = AddGeometry(model, {Values(1), Values(2), Values(1), Values(3)});
  Geometry& second = AddGeometry(model, {Values(2), Values(3), Values(4), NumericArray()});
  first.EditVariable(3).mKind = 13;
  second.EditVariable(1).mKind = 9;  // stored first, but of another type
  second.EditVariable(0).mKind = 0;
  second.EditVariable(0).mFlag = 7;
  second.EditVariable(0).mAttributes["load"] = 2.5F;
  first.AppendVariable(MakeLinked("to c", {2, 2}));
  first.AppendVariable(MakeLinked("to e", {2, 4}));
  first.AppendVariable(MakeLinked("dangling", {9, 9}));
  second.AppendVariable(MakeLinked("to a", {3, 0}));
  second.AppendVariable(MakeVariable("empty", 12, {}));
  const SharedArrays shared = Share(model);
  EXPECT_THAT(Texts(2), ElementsAre("a", "b", "c -> 2,0", "d", "to c -> 2,0", "to e -> 2,0",
                                    "dangling -> 9,9"));
  EXPECT_THAT(Texts(3), ElementsAre("a -> 2,1", "b", "c", "d", "to a -> 2,1", "empty"));
  EXPECT_EQ(shared.mLinked, 2U);
  EXPECT_EQ(shared.mSharedBytes, 1U);  // of different types
  EXPECT_EQ(shared.mSavedBytes, 3 * kSize);
  EXPECT_EQ(GetHeavySize(), 4 * kSize);
  EXPECT_EQ(SaveShared(mTree).mLinked, 0U);
}

TEST_F(ShareArraysTest, FieldsThatALinkDoesNotStoreAreKept) {
  const std::initializer_list<void (*)(Geometry::VarStruct&)> changes = {[](auto& result) { result.mKindHighByte = 5; },
                                                                         [](auto& result) { result.mKindHighByte = 3; },
                                                                         [](auto& result) { result.mKind = 4; },
                                                                         [](auto& result) { result.mFlag1 = 1; },
                                                                         [](auto& result) { result.mFlag2 = 1; },
                                                                         [](auto& result) { result.mFlag3 = 1; },
                                                                         [](auto& result) { result.mValue1 = 1; },
                                                                         [](auto& result) { result.mValue2 = 1; }};
  Tree model(false);
  Geometry& geometry = AddGeometry(model, {Values(1), Values(1)});
  for (const auto change : changes) {
    for (int i = 0; i < 2; ++i) {
      geometry.AppendVariable(MakeVariable("x", 12, Values(1)));
      change(geometry.EditVariable(geometry.GetVariables().size() - 1));
    }
  }
  geometry.AppendVariable(MakeVariable("wide", 12, NumericArray::Of(Ramp(kNumValues, 1), 2)));
  const SharedArrays shared = Share(model);
  EXPECT_EQ(shared.mLinked, 1 + changes.size());
  EXPECT_EQ(shared.mSharedBytes, changes.size());
  EXPECT_EQ(GetHeavySize(), 2 * kSize);

  // The bytes of arrays in memory cannot be shared before they are saved.
  EXPECT_EQ(ShareBeforeCopying(model).mLinked, 1 + changes.size());
  EXPECT_EQ(ShareBeforeCopying(model).mSharedBytes, 0U);
  EXPECT_EQ(SaveShared(model).mSharedBytes, changes.size());
  EXPECT_EQ(GetHeavySize(), 2 * kSize);
}

TEST_F(ShareArraysTest, BytesAreSharedUpToTheLimitOfLoad) {
  Tree model(false);
  Geometry& geometry = AddGeometry(model, std::vector<NumericArray>(200, Values(1)));
  for (std::uint32_t i = 0; i < 200; ++i) geometry.EditVariable(i).mValue1 = i;
  const SharedArrays shared = Share(model);
  EXPECT_EQ(shared.mSharedBytes, 196U);
  EXPECT_EQ(shared.mSavedBytes, 196 * kSize);
  EXPECT_EQ(GetHeavySize(), 4 * kSize);
}

TEST_F(ShareArraysTest, ComparesBitsNotNumbers) {
  const auto array = [](std::uint32_t bits) {
    std::vector<std::uint32_t> values(kNumValues, 0x3F800000);
    values.back() = bits;
    return NumericArray::Of(values);
  };
  Tree model(false);
  AddGeometry(model, {array(0), array(0x80000000), array(0x7FC00000), array(0x7FC00001),
                      array(0x7FA00001), array(0x7FC00001), array(0x80000000)});
  const SharedArrays shared = Share(model);
  EXPECT_THAT(Texts(2), ElementsAre("a", "b", "c", "d", "e", "f -> 2,3", "g -> 2,1"));
  EXPECT_EQ(shared.mLinked, 2U);
}

/// All arrays of a length have the same hash, and few bytes are compared at a time.
TEST_P(KeptArraysTest, EqualHashesOfDifferentArraysChangeNothing) {
  SearchLimits limits;
  limits.mKept = GetParam() * kSize;
  limits.mWhole = limits.mKept;
  limits.mHashMask = 0;
  limits.mMemory = 1500;
  std::vector<float> late = Ramp(kNumValues, 3);
  late.back() += 1;
  Tree model(false);
  AddGeometry(model, Repeat(4, 10)).AppendVariable(MakeVariable("x", 12, NumericArray::Of(late)));
  const SharedArrays shared = Share(model, limits);
  EXPECT_EQ(shared.mLinked, 30U);
  EXPECT_EQ(shared.mNotCompared, 0U);
  EXPECT_EQ(Texts(2)[13], "n -> 2,3");

  AddGeometry(model, Repeat(1, 30));  // too many different ones
  const std::string before = DescribeResults(model);
  EXPECT_GT(SaveShared(model, limits).mNotCompared, 10U);
  EXPECT_EQ(DescribeResults(model), before);
}

TEST_F(ShareArraysTest, GivesUpWhenTooMuchIsSkipped) {
  Tree model(false);
  AddGeometry(model, Repeat(2, 5));
  SearchLimits limits;
  limits.mMemory = 500;
  limits.mKept = 0;
  limits.mSkips = {1, 0};
  const SharedArrays shared = Share(model, limits);
  EXPECT_GT(shared.mNotCompared, 0U);
  EXPECT_EQ(shared.mLinked + shared.mNotCompared, 5U);
}

/// Arrays of older files are stored in another form than Save writes.
TEST_F(ShareArraysTest, ComparesArraysOfOldFiles) {
  SaveOldestModel(mDir / "old.ryx");
  Tree old(false);
  LoadTree(old, mDir / "old.ryx");
  SaveTree(old, mDir / "new.ryx");
  MakeMergeRoot(mTree);
  for (const char* name : {"old.ryx", "new.ryx", "old.ryx"}) MergeFile(mTree, mDir / name);
  AddGeometry(mTree, {NumericArray::Of(Ramp(9, 1), 3), NumericArray::Of(Ramp(9, 1), 1)});
  const SharedArrays shared = ShareLoaded(DescribeResults(mTree));
  EXPECT_EQ(shared.mLinked, 6U);
  EXPECT_EQ(GetHeavySize(), 2 * 9 * sizeof(float));
}

TEST_F(ShareArraysTest, DamagedAndChangedInputsRaiseErrors) {
  for (const char* name : {"a.ryx", "b.ryx"}) SavePlate(mDir / name, {"Stress"}, 1, kNumValues);
  const std::string whole = ReadFile(mDir / "b.ryx");
  const auto time = std::filesystem::last_write_time(mDir / "b.ryx");
  constexpr std::size_t kFirstBlock = 2804;  // after the length of its content
  for (std::size_t at = kFirstBlock; at < (kFirstBlock + whole.size()) / 2; at += 97) {
    Tree tree(false);
    MakeMergeRoot(tree);
    for (const char* name : {"a.ryx", "b.ryx"}) MergeFile(tree, mDir / name);
    std::string bytes = whole;
    bytes[at] = static_cast<char>(bytes[at] ^ 4);
    WriteFile(mDir / "b.ryx", bytes);
    std::filesystem::last_write_time(mDir / "b.ryx", time);  // otherwise the change is detected
    EXPECT_ANY_THROW(SaveShared(tree)) << at;
    ForEachGeometry(tree.GetNodes(), [](std::uint32_t, const Geometry& geometry) {
      for (const auto& result : geometry.GetVariables()) EXPECT_FALSE(result.mLink.IsLinked());
    });
    WriteFile(mDir / "b.ryx", whole);
    std::filesystem::last_write_time(mDir / "b.ryx", time);
  }
  MakeMergeRoot(mTree);
  for (const char* name : {"a.ryx", "b.ryx"}) MergeFile(mTree, mDir / name);
  std::filesystem::last_write_time(mDir / "b.ryx", time + std::chrono::seconds(1));
  ExpectError(ErrorType::ReadError, "changed while it was read", [this] { SaveShared(mTree); });
}

class ShareRandomTest : public ShareArraysTest,
                        public testing::WithParamInterface<std::uint32_t> {};

TEST_P(ShareRandomTest, ThreeCopiesTakeTheRoomOfOne) {
  Tree model(false);
  RandomModel(GetParam()).Fill(model);
  SaveTree(model, mDir / "one.ryx");
  MakeMergeRoot(mTree);
  for (int i = 0; i < 3; ++i) MergeFile(mTree, mDir / "one.ryx");
  const SharedArrays shared = ShareLoaded(DescribeResults(mTree));
  EXPECT_GE(shared.mSavedBytes, 2 * CountHeavyBytes(model.GetNodes()));
  const std::string bytes = ReadStreams(mDir / "out.ryx")[kHeavyData];
  SaveShared(mTree, {}, 3);
  EXPECT_EQ(ReadStreams(mDir / "out.ryx")[kHeavyData], bytes);
}

INSTANTIATE_TEST_SUITE_P(Seeds, ShareRandomTest, testing::Range(1U, 21U));

TEST_F(ShareArraysTest, KeepsBlocksOfWhichHalfIsStored) {
  // Blocks: ab ac bc bd. The third one would store nothing.
  LoadInBlocksOfTwo(
      {Values(1), Values(2), Values(1), Values(3), Values(2), Values(3), Values(2), Values(4)});
  const SharedArrays shared = ShareBeforeCopying(mTree);
  EXPECT_EQ(shared.mKept, 2U);
  EXPECT_EQ(shared.mLinked, 2U);
  EXPECT_EQ(shared.mSavedBytes, 2 * kSize);
  mTree.Save(mDir / "out.ryx", "", {.mKeepBlocks = BlockKeeping::Checked});
  EXPECT_EQ(GetHeavySize(), 6 * kSize);
  EXPECT_EQ(DescribeModel(mDir / "out.ryx"), DescribeModel(mTree));
}

}  // namespace
}  // namespace Qov::Test
