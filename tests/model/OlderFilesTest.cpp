#include <gtest/gtest.h>

#include <array>
#include <functional>

#include "Qov/Ryx/AttributesIo.h"
#include "Qov/Ryx/FileVersionScope.h"
#include "Qov/Ryx/StreamNames.h"
#include "support/Errors.h"
#include "support/ModelCompare.h"
#include "support/Streams.h"
#include "support/TempDir.h"

namespace Qov::Test {
namespace {

using namespace QovRyx;

/// A file as older programs wrote it, record by record: the root, then its children.
class OldFile {
 public:
  OldFile(std::int32_t numRecords, bool wideOffsets) : mWideOffsets(wideOffsets) {
    GetIndex().GetWritingBlockIndex(kLightData);
    GetIndex().Put(kRyxTree, numRecords);
    PutRecord("", "", "");
  }

  QovJbf::Index& GetIndex() { return mFile.GetIndex(); }
  QovJbf::JbFile& GetFile() { return mFile; }

  void PutRecord(const std::string& name, const std::string& type, const std::string& version) {
    const std::uint32_t id = ++mLastId;
    for (const std::uint32_t link : {id, id == 1 ? 0U : 1U, 0U, 0U, 0U, 0U}) {
      GetIndex().Put(kRyxTree, link);
    }
    for (const std::string& text : {name, type, version}) GetIndex().Put(kRyxTree, text);
    const std::uint64_t offset = GetIndex().GetStreamLength(kLightData);
    if (mWideOffsets) {
      GetIndex().Put(kRyxTree, offset);
    } else {
      GetIndex().Put(kRyxTree, static_cast<std::uint32_t>(offset));
    }
  }

  void PutPlacement() {
    for (int value = 1; value <= 10; ++value) {
      GetIndex().Put(kLightData, static_cast<float>(value));
    }
  }

  void PutGeometry(Geometry& geometry, const std::string& version) {
    PutRecord(geometry.GetName(), "Geometry", version);
    geometry.WriteJb(mFile, kLightData, kHeavyData, kAttributes, version);
  }

 private:
  QovJbf::JbFile mFile;
  bool mWideOffsets;
  std::uint32_t mLastId = 0;
};

TEST(OlderFiles, GroupsAndShapesHaveWhatTheirVersionHad) {
  const TempDir dir;
  OldFile old(8, false);
  for (const char* version : {"0.0a", "0.1"}) old.PutRecord(version, "Group", version);
  for (const char* version : {"0.2", "0.3", "0.4"}) {
    old.PutRecord(version, "Group", version);
    old.PutPlacement();
    if (version == std::string("0.2")) continue;
    QovUtil::WriteAttributesToJbf(old.GetFile(), kAttributes, {{"a", 7U}});
    if (version == std::string("0.4")) old.GetIndex().Put(kLightData, std::uint8_t{3});
  }
  old.PutRecord("bare", "Shape", "0.1");
  old.PutRecord("dressed", "Shape", "0.2");
  MaterialValues values;
  values.mScalar1 = 5.0F;
  old.GetIndex().Put(kResources, values);
  WriteTo(old.GetFile(), dir / "old.ryx", "0.6");

  Tree tree(false);
  LoadTree(tree, dir / "old.ryx");
  const auto groupOf = [&](std::uint32_t id) {
    return dynamic_cast<const Group*>(tree.GetNodes().GetReqNode(id).mData.get());
  };
  for (const std::uint32_t id : {2U, 3U}) EXPECT_EQ(groupOf(id)->mScale[0], 1.0F);
  for (const std::uint32_t id : {4U, 5U, 6U}) {
    EXPECT_EQ(groupOf(id)->mTranslation[2], 3.0F);
    EXPECT_EQ(groupOf(id)->mScale[2], 10.0F);
    EXPECT_EQ(groupOf(id)->mAttributes.size(), id == 4 ? 0U : 1U);
    EXPECT_EQ(groupOf(id)->mTakesModels, id == 6 ? 3 : 0);
  }
  const auto scalarOf = [&](std::uint32_t id) {
    const auto* shape = dynamic_cast<const Shape*>(tree.GetNodes().GetReqNode(id).mData.get());
    return shape->mMaterial.mValues.mScalar1;
  };
  EXPECT_EQ(scalarOf(7), 0.0F);
  EXPECT_EQ(scalarOf(8), 5.0F);
}

class OlderGeometryTest : public testing::TestWithParam<const char*> {};

/// Values that stand inline come one geometry after the other, with node sets in between.
TEST_P(OlderGeometryTest, ReadsValuesThatStandInline) {
  const std::string version = GetParam();
  Geometry first("first");
  first.AppendVariable(MakeVariable("Coordinates", 0, NumericArray::Of(Ramp(6, 1.0F), 3)));
  first.AppendVariable(MakeVariable("none", 12, {}));
  first.AppendVariable(MakeVariable("Connectivity", 4, NumericArray::Of(Count(4, 9))));
  Geometry second("second");
  second.AppendVariable(MakeVariable("Stress|LC1", 12, NumericArray::Of(Ramp(2, 7.0F))));
  for (Geometry* geometry : {&first, &second}) {
    for (std::size_t i = 0; i < geometry->GetVariables().size(); ++i) {
      geometry->EditVariable(i).mOffset = 0;  // of no account where values stand inline
      geometry->EditVariable(i).mAttributes["unit"] = std::string("mm");
    }
  }
  NodeSets sets("Sets");
  sets.SetSets({{"edge", Count(3, 1)}});

  const TempDir dir;
  OldFile old(4, false);
  old.PutGeometry(first, version);
  old.PutRecord("Sets", "NodeSets", "0.1");
  sets.SaveDataBlocks(old.GetFile(), kHeavyData);
  sets.WriteLightData(old.GetFile(), kLightData);
  old.PutGeometry(second, version);
  WriteTo(old.GetFile(), dir / "old.ryx", "0.5");

  Tree tree(false);
  LoadTree(tree, dir / "old.ryx");
  const auto expectSame = [](const Geometry& expected, const Geometry* actual) {
    ASSERT_EQ(VariableTexts(expected), VariableTexts(*actual));
    for (std::size_t i = 0; i < expected.GetVariables().size(); ++i) {
      std::ostringstream wanted;
      std::ostringstream got;
      Describe(wanted, expected.GetVariables()[i]);
      Describe(got, actual->GetVariables()[i]);
      EXPECT_EQ(wanted.str(), got.str());
    }
  };
  expectSame(first, AsGeometry(tree.GetNodes().GetReqNode(2)));
  expectSame(second, AsGeometry(tree.GetNodes().GetReqNode(4)));

  SaveTree(tree, dir / "new.ryx");
  EXPECT_EQ(DescribeModel(dir / "new.ryx"), DescribeModel(dir / "old.ryx"));
}

INSTANTIATE_TEST_SUITE_P(Versions, OlderGeometryTest, testing::Values("0.5", "0.4", "0.1", ""));

/// The streams of a current file with view points, as a file of another version.
void WriteWithVersion(const TempDir& dir, const std::string& version) {
  Tree tree("maker", "1", false);
  AddViewPointPath(tree, "round", 1);
  SaveTree(tree, dir / "a.ryx");
  WriteStreams(dir / "b.ryx", ReadStreams(dir / "a.ryx"), version);
}

TEST(OlderFiles, ViewPointsGoByTheVersionOfTheFile) {
  const TempDir dir;
  WriteWithVersion(dir, "0.9");
  Tree loaded(false);
  LoadTree(loaded, dir / "b.ryx");
  EXPECT_EQ(loaded.GetViewPointPaths().size(), 1U);
  EXPECT_EQ(loaded.GetFileVersion(), "0.9");

  // The tree of a bare root reads the same with narrow offsets: its only record is the last.
  WriteWithVersion(dir, "0.1");
  Tree oldest(false);
  LoadTree(oldest, dir / "b.ryx");
  EXPECT_FALSE(oldest.HasViewPoints());
  EXPECT_EQ(oldest.GetViewPoint().mName, "no name");

  for (const char* version : {"0.1a", "0.1b", "0.2"}) {
    WriteWithVersion(dir, version);
    Tree old(false);
    EXPECT_ANY_THROW(LoadTree(old, dir / "b.ryx")) << version;
    EXPECT_EQ(QovJbf::ryx_file_version, "1.3");
  }
}

TEST(OlderFiles, NewerOnesAreRefused) {
  const TempDir dir;
  WriteWithVersion(dir, "1.4");
  ExpectError(ErrorType::UnknownVersion,
              "This file is of ryx file version 14.\nThis version of Pelorin only supports ryx "
              "file version upto 13.\n",
              [&] { DescribeModel(dir / "b.ryx"); });
}

}  // namespace
}  // namespace Qov::Test
