#include <gtest/gtest.h>

#include "model/AttributesIo.h"
#include "records/FileVersionScope.h"
#include "support/Errors.h"
#include "support/ModelCompare.h"
#include "support/OldFile.h"
#include "support/Streams.h"
#include "support/TempDir.h"

namespace Qov::Test {
namespace {

using namespace QovRyx;

void PutPlacement(OldFile& old) {
  for (int value = 1; value <= 10; ++value)
    old.GetIndex().Put(kLightData, static_cast<float>(value));
}

TEST(OlderFiles, GroupsAndShapesHaveTheFieldsOfTheirVersion) {
  const TempDir dir;
  OldFile old(8);
  for (const char* version : {"0.0a", "0.1"}) old.PutRecord(version, "Group", version);
  for (const char* version : {"0.2", "0.3", "0.4"}) {
    old.PutRecord(version, "Group", version);
    PutPlacement(old);
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

TEST(OlderFiles, RefusesGeometriesOfNewerVersions) {
  const TempDir dir;
  for (const char* version : {"0.8", "0.10", "1.0", "99999999999.0"}) {
    Geometry geometry("Mesh");
    OldFile old(2);
    old.PutGeometry(geometry, version);
    WriteTo(old.GetFile(), dir / "new.ryx", "0.6");
    Tree tree(false);
    ExpectError(ErrorType::UnknownVersion, "has version \"" + std::string(version) + "\"",
                [&] { LoadTree(tree, dir / "new.ryx"); });
  }
}

class OlderGeometryTest : public testing::TestWithParam<const char*> {};

/// Inline values follow each other geometry by geometry, with node sets in between.
TEST_P(OlderGeometryTest, ReadsInlineValues) {
  const std::string version = GetParam();
  Geometry first("first");
  first.AppendVariable(MakeVariable("Coordinates", 0, NumericArray::Of(Ramp(6, 1.0F), 3)));
  first.AppendVariable(MakeVariable("none", 12, {}));
  first.AppendVariable(MakeVariable("Connectivity", 4, NumericArray::Of(Count(4, 9))));
  Geometry second("second");
  second.AppendVariable(MakeVariable("Stress|LC1", 12, NumericArray::Of(Ramp(2, 7.0F))));
  for (Geometry* geometry : {&first, &second}) {
    for (std::size_t i = 0; i < geometry->GetVariables().size(); ++i) {
      geometry->EditVariable(i).mOffset = 0;  // ignored for inline values
      geometry->EditVariable(i).mAttributes["unit"] = std::string("mm");
    }
  }
  NodeSets sets("Sets");
  sets.SetSets({{"edge", Count(3, 1)}});

  const TempDir dir;
  OldFile old(4);
  old.PutGeometry(first, version);
  old.PutRecord("Sets", "NodeSets", "0.1");
  sets.SaveDataBlocks(old.GetFile(), kHeavyData, false);
  sets.WriteLightData(old.GetFile(), kLightData);
  old.PutGeometry(second, version);
  WriteTo(old.GetFile(), dir / "old.ryx", "0.5");

  Tree tree(false);
  LoadTree(tree, dir / "old.ryx");
  const auto describe = [](const Node& node) {
    std::ostringstream text;
    DescribePayload(text, node);
    return text.str();
  };
  EXPECT_EQ(describe(*tree.GetNodes().GetReqNode(2).mData), describe(first));
  EXPECT_EQ(describe(*tree.GetNodes().GetReqNode(3).mData), describe(sets));
  EXPECT_EQ(describe(*tree.GetNodes().GetReqNode(4).mData), describe(second));

  SaveTree(tree, dir / "new.ryx");
  EXPECT_EQ(DescribeModel(dir / "new.ryx"), DescribeModel(dir / "old.ryx"));
}

INSTANTIATE_TEST_SUITE_P(Versions, OlderGeometryTest, testing::Values("0.5", "0.4", "0.1", ""));

/// Loads a file that has the streams of the current version, view points included, and another
/// version in its header.
void LoadWithVersion(Tree& tree, const std::string& version) {
  const TempDir dir;
  Tree current("maker", "1", false);
  AddViewPointPath(current, "round", 1);
  SaveTree(current, dir / "a.ryx");
  WriteStreams(dir / "b.ryx", ReadStreams(dir / "a.ryx"), version);
  LoadTree(tree, dir / "b.ryx");
}

TEST(OlderFiles, ViewPointsDependOnTheVersionOfTheFile) {
  Tree loaded(false);
  LoadWithVersion(loaded, "0.9");
  EXPECT_EQ(loaded.GetViewPointPaths().size(), 1U);
  EXPECT_EQ(loaded.GetFileVersion(), "0.9");

  // Narrow offsets do not matter here: the offset is the last field of the only tree record.
  Tree oldest(false);
  LoadWithVersion(oldest, "0.1");
  EXPECT_FALSE(oldest.HasViewPoints());
  EXPECT_EQ(oldest.GetViewPoint().mName, "no name");

  for (const char* version : {"0.1a", "0.1b", "0.2"}) {
    Tree old(false);
    EXPECT_ANY_THROW(LoadWithVersion(old, version)) << version;
    EXPECT_EQ(QovJbf::ryx_file_version, "1.3");
  }
  Tree newer(false);
  ExpectError(ErrorType::UnknownVersion, "upto 13.", [&] { LoadWithVersion(newer, "1.4"); });
}

}  // namespace
}  // namespace Qov::Test
