#include <gtest/gtest.h>

#include <filesystem>

#include "Qov/Ryx/StreamNames.h"
#include "support/Errors.h"
#include "support/ModelCompare.h"
#include "support/Streams.h"
#include "support/TempDir.h"

namespace Qov::Test {
namespace {

using namespace QovRyx;

void SaveSample(const std::string& path) {
  Tree tree("maker", "1", false);
  BuildPlate(tree, {"Stress|LC1"}, 3);
  AddViewPointPath(tree, "round", 2);
  SaveTree(tree, path);
}

TEST(Save, WritesTheRootAlone) {
  const TempDir dir;
  Tree tree(false);
  SaveTree(tree, dir / "root.ryx");
  const Streams streams = ReadStreams(dir / "root.ryx");
  EXPECT_EQ(ToHex(streams.at(kRyxTree)),
            "01000000"                                          // one entry
            "010000000000000000000000000000000000000000000000"  // its links
            "000000000000000000000000"                          // no name, type, version
            "0000000000000000");                                // no light data
  EXPECT_EQ(streams.at(kLightData), "");
  EXPECT_FALSE(streams.contains(kViewPoints));
  EXPECT_FALSE(streams.contains(kHeavyData));
  EXPECT_EQ(DescribeModel(dir / "root.ryx"), DescribeModel(tree));
}

TEST(Save, AddsToTheHistoryEachTime) {
  const TempDir dir;
  Tree tree("maker", "2", false);
  SaveTree(tree, dir / "a.ryx");
  tree.Save(dir / "a.ryx", true, "again", Tree::SupportedFileFormats::Ryx);
  Tree loaded(false);
  LoadTree(loaded, dir / "a.ryx");
  ASSERT_EQ(loaded.GetModifiers().size(), 2U);
  const ModifierInfo& last = loaded.GetModifiers().back();
  EXPECT_EQ(last.mApplication + last.mApplicationVersion, "maker2");
  EXPECT_EQ(last.mFileVersion, "1.3");
  EXPECT_EQ(last.mComment, "again");
  EXPECT_EQ(last.mHost + last.mUser, "");
  EXPECT_FALSE(last.mDate.empty());
}

TEST(Save, StoresIntegerArraysFirstAndEmptyOnesWithoutBytes) {
  const TempDir dir;
  Tree tree(false);
  Geometry& geometry = AddNode<Geometry>(tree, 1, "g");
  geometry.AppendVariable(MakeVariable("results", 12, NumericArray::Of(Count(3, 0x01020304))));
  geometry.AppendVariable(MakeVariable("empty", 12, {}));
  geometry.AppendVariable(MakeVariable("ids", 6, NumericArray::Of(Count(2, 0x0A0B0C0D))));
  SaveTree(tree, dir / "a.ryx");
  EXPECT_EQ(ToHex(ReadStreams(dir / "a.ryx").at(kHeavyData)),
            "0d0e"
            "0c0c"
            "0b0b"
            "0a0a"
            "040506"
            "030303"
            "020202"
            "010101");
}

TEST(Save, KeepsTheValuesOfEqualNamesApart) {
  const TempDir dir;
  Tree tree(false);
  Geometry& geometry = AddNode<Geometry>(tree, 1, "g");
  geometry.AppendVariable(MakeVariable("same", 12, NumericArray::Of(Ramp(3, 1.0F))));
  geometry.AppendVariable(MakeVariable("same", 12, NumericArray::Of(Ramp(3, 2.0F))));
  SaveTree(tree, dir / "a.ryx");
  EXPECT_EQ(DescribeModel(dir / "a.ryx"), DescribeModel(tree));
}

TEST(Save, RefusesAFileThatIsStillReadFrom) {
  const TempDir dir;
  SaveSample(dir / "a.ryx");
  std::filesystem::create_symlink(dir / "a.ryx", dir / "link.ryx");
  const Streams before = ReadStreams(dir / "a.ryx");
  Tree tree(false);
  LoadTree(tree, dir / "a.ryx");
  ExpectError(ErrorType::MiscellaneousError,
              "Output file \"" + (dir / "link.ryx") + "\" is also an input",
              [&] { SaveTree(tree, dir / "link.ryx"); });
  EXPECT_EQ(ReadStreams(dir / "a.ryx"), before);
}

TEST(Load, KeepsIdsInAFreshTreeAndShiftsThemBeneathAGroup) {
  const TempDir dir;
  SaveSample(dir / "a.ryx");
  Tree fresh(false);
  Tree::IdMap ids;
  fresh.Load(dir / "a.ryx", ids, Tree::ReadMode::Everything, Tree::SupportedFileFormats::Ryx);
  EXPECT_EQ(ids, (Tree::IdMap{{1, 1}, {2, 2}, {3, 3}, {4, 4}, {5, 5}}));

  Tree merged(false);
  auto root = std::make_unique<Group>("Merge");
  root->mTakesModels = 1;
  merged.GetNodes().GetCurrentNode().mData = std::move(root);
  ids.clear();
  merged.Load(dir / "a.ryx", ids, Tree::ReadMode::Everything, Tree::SupportedFileFormats::Ryx);
  EXPECT_EQ(ids, (Tree::IdMap{{2, 1}, {3, 2}, {4, 3}, {5, 4}, {6, 5}}));
  merged.Merge(dir / "a.ryx", Tree::ReadMode::Everything, Tree::SupportedFileFormats::Ryx);
  EXPECT_EQ(merged.GetNodes().GetSize(), 11U);
  EXPECT_EQ(merged.GetModifiers().size(), 1U);
  EXPECT_EQ(merged.GetViewPointPaths().size(), 1U);
  const auto& first = merged.GetNodes().GetReqNode(2);
  const auto& second = merged.GetNodes().GetReqNode(7);
  EXPECT_EQ(first.mParent + second.mParent, 2U);
  EXPECT_EQ(first.mNextSibling, 7U);
  EXPECT_EQ(second.mPreviousSibling, 2U);
  EXPECT_EQ(second.mFirstChild, 8U);
  EXPECT_EQ(merged.GetNodes().GetReqNode(1).mLastChild, 7U);
}

TEST(Load, WantsEveryStreamButTheHistoryAndTheViews) {
  const TempDir dir;
  SaveSample(dir / "a.ryx");
  const Streams all = ReadStreams(dir / "a.ryx");
  for (const auto& [name, bytes] : all) {
    Streams others = all;
    others.erase(name);
    WriteStreams(dir / "b.ryx", others);
    const auto load = [&] { DescribeModel(dir / "b.ryx"); };
    if (name == kGlobalInformation || name == kViewPoints) {
      EXPECT_NO_THROW(load()) << name;
    } else if (name == kHeavyData) {
      ExpectError(ErrorType::OutOfBounds, "Not enough bytes in the block", load);
    } else {
      ExpectError(ErrorType::ElementNotFound, "Element Not Found", load);
    }
  }
}

TEST(Load, WantsEveryStreamToItsEnd) {
  const TempDir dir;
  SaveSample(dir / "a.ryx");
  const Streams all = ReadStreams(dir / "a.ryx");
  for (const auto& [name, bytes] : all) {
    for (std::size_t length = 0; length < bytes.size(); length += 1 + bytes.size() / 50) {
      Streams cut = all;
      cut[name].resize(length);
      WriteStreams(dir / "b.ryx", cut);
      ExpectError(ErrorType::OutOfBounds, "", [&] { DescribeModel(dir / "b.ryx"); });
    }
  }
}

TEST(Load, RefusesATreeThatIsNone) {
  const TempDir dir;
  SaveSample(dir / "a.ryx");
  const Streams good = ReadStreams(dir / "a.ryx");
  const auto expectRefusal = [&](std::size_t at, std::uint32_t number, ErrorType type) {
    Streams bad = good;
    std::memcpy(bad[kRyxTree].data() + at, &number, sizeof(number));
    WriteStreams(dir / "b.ryx", bad);
    ExpectError(type, "", [&] { DescribeModel(dir / "b.ryx"); });
  };
  constexpr std::size_t kRecord = 4 + 24 + 12 + 8;  // behind the count and the root's record
  expectRefusal(0, 0, ErrorType::ModelError);
  expectRefusal(0, 0xFFFFFFFF, ErrorType::ModelError);
  expectRefusal(0, 0x7FFFFFFF, ErrorType::OutOfBounds);
  expectRefusal(4, 9, ErrorType::ModelError);           // the first is not the root
  expectRefusal(kRecord, 1, ErrorType::ElementExists);  // two roots
  expectRefusal(kRecord, 0, ErrorType::ElementExists);  // 0 means none
  expectRefusal(kRecord, 0xFFFFFFFF, ErrorType::ModelError);
}

TEST(Load, RefusesWhatIsNoModelFile) {
  const TempDir dir;
  const auto expectRefusal = [&](const std::string& content) {
    std::FILE* file = std::fopen((dir / "text.ryx").c_str(), "wb");
    std::fwrite(content.data(), 1, content.size(), file);
    std::fclose(file);
    ExpectError(ErrorType::FormatNotSupported, (dir / "text.ryx") + " is not a Ryx file",
                [&] { DescribeModel(dir / "text.ryx"); });
  };
  expectRefusal("");
  expectRefusal("a text file, not a model");
  ExpectError(ErrorType::FormatNotSupported, " is not a Ryx file",
              [&] { DescribeModel(dir.GetPath().string()); });
  ExpectError(ErrorType::MiscellaneousError, "Unable to open file \"/no/such/file\"",
              [] { DescribeModel("/no/such/file"); });
}

TEST(Load, NotesLegacyWriters) {
  const TempDir dir;
  for (const auto& [version, isLegacy] :
       {std::pair{"2010 R1 4,1,311,217", true}, std::pair{"2010 R1 4.1.311.217", false}}) {
    Tree tree("viewer", version, false);
    SaveTree(tree, dir / "a.ryx");
    Tree loaded(false);
    LoadTree(loaded, dir / "a.ryx");
    EXPECT_EQ(g_b217Ryx, isLegacy) << version;
  }
}

}  // namespace
}  // namespace Qov::Test
