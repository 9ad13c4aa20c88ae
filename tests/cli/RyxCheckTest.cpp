#include <cstring>
#include <filesystem>

#include "Qov/Util/Exception.h"
#include "StreamDamage.h"
#include "check/FileCheck.h"
#include "ryxFixture.h"
#include "support/BuildKind.h"
#include "support/Files.h"
#include "support/OldFile.h"
#include "support/RandomModel.h"
#include "support/ScopedEnvironment.h"
#include "support/SharedModels.h"
#include "support/Streams.h"

namespace Qov::Test {
namespace {

using namespace QovRyx;
using testing::HasSubstr;

template <class T>
void Poke(std::string& bytes, std::size_t at, T value) {
  ASSERT_LE(at + sizeof value, bytes.size());
  std::memcpy(bytes.data() + at, &value, sizeof value);
}
std::uint32_t Peek(const std::string& bytes, std::size_t at) {
  std::uint32_t value = 0;
  std::memcpy(&value, bytes.data() + at, sizeof value);
  return value;
}

/// Positions of the plate's records in the tree stream, and of the fields in a record.
constexpr std::size_t kGeometry = 161;
constexpr std::size_t kSets = 220;
constexpr std::size_t kParent = 4;
constexpr std::size_t kNext = 12;

/// Positions in the container: first item of the index, size of an item, position of the block size
/// in it, and first block.
constexpr std::size_t kItems = 20;
constexpr std::size_t kItemSize = 139;
constexpr std::size_t kBlockSize = 133;
constexpr std::size_t kBlocks = 2800;

/// Returns the position of the block whose item is at `item`.
std::size_t FindBlock(const std::string& bytes, std::size_t item) {
  std::size_t at = kBlocks;
  for (std::size_t i = kItems; i != item; i += kItemSize) at += Peek(bytes, i + kBlockSize);
  return at;
}

std::string FindingsOf(const std::string& path) {
  Tools::FileReport report(1000);
  Tools::CheckFile(path, report);
  std::string text;
  for (const Tools::Finding& finding : report.mFindings.GetKept()) {
    text += finding.mSeverity == Tools::Severity::Error ? "error " : "warning ";
    text += finding.mCode + " @ " + finding.mPlace.GetText() + ": " + finding.mText + "\n";
  }
  return Unbarred(text);
}

class RyxCheck : public RyxProgram {
 protected:
  std::string SavePlate() const {
    return SaveModel("plate.ryx", [](Tree& tree) {
      BuildPlate(tree, {"Stress|LC1"}, 0);
      AddViewPointPath(tree, "walk", 2);
    });
  }

  /// Expects that each line "STREAM: DAMAGE; ..." of a golden file causes the findings below that
  /// line.
  void ExpectFindings(const std::string& golden, const Streams& sound,
                      const std::string& version = "1.3") const {
    ExpectAfterEachLine(golden, [&](const std::string& damages) {
      Streams streams = sound;
      const std::string fileDamage = DamageStreams(streams, damages);
      const std::string path = mDir / "damaged.ryx";
      WriteStreams(path, streams, version);
      std::string bytes = ReadFile(path);
      if (!fileDamage.empty()) Damage(bytes, fileDamage);
      WriteFile(path, bytes);
      return FindingsOf(path);
    });
  }
};

TEST_F(RyxCheck, FindsNothingInSamples) {
  ASSERT_EQ(Run({"sample", mDir / ""}).mStatus, 0);
  std::size_t numFiles = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(mDir.GetPath())) {
    if (!entry.is_regular_file()) continue;
    EXPECT_EQ(FindingsOf(entry.path()), "") << entry.path();
    ++numFiles;
  }
  EXPECT_GT(numFiles, 5U);
}

TEST_F(RyxCheck, FindsNoErrorInSharedModels) {
  if (!std::filesystem::is_directory(SharedModelsDir())) GTEST_SKIP() << "no shared models";
  for (const auto& entry : std::filesystem::recursive_directory_iterator(SharedModelsDir())) {
    const std::string kind = entry.path().extension();
    if (kind != ".ryx" && kind != ".vpt") continue;
    const std::string name = entry.path().filename();
    const char* expected = name == "oldest.vpt" ? "warning no-model @ "
                           : name == "rear_case.ryx"
                               ? "warning result-name"  // two results are named "Normals"
                               : "";
    EXPECT_EQ(FindingsOf(entry.path()).substr(0, 19), expected) << entry.path();
  }
}

TEST_F(RyxCheck, FindsOnlyDanglingLinksInRandomModels) {
  for (std::uint32_t seed = 0; seed < 60; ++seed) {
    std::istringstream findings(
        FindingsOf(SaveModel("random.ryx", [seed](Tree& tree) { RandomModel(seed).Fill(tree); })));
    for (std::string line; std::getline(findings, line);) {
      if (line.find(" @ ") == line.npos) continue;  // a name with a newline
      EXPECT_THAT(line, testing::ContainsRegex("^(error link-|warning array-|warning result-)"))
          << seed;
    }
  }
}

TEST_F(RyxCheck, FindsEachDamage) {
  Streams sound = ReadStreams(SavePlate());
  QovJbf::JbFile history;  // without host and date
  history.GetIndex().Put("Global Information", std::vector<ModifierInfo>(1));
  WriteTo(history, mDir / "history");
  sound["Global Information"] = ReadStreams(mDir / "history").begin()->second;
  for (const char* golden : {"check_tree.txt", "check_light.txt", "check_arrays.txt",
                             "check_records.txt", "check_container.txt"}) {
    ExpectFindings(golden, sound);
  }
}

using Corners = std::vector<std::uint32_t>;

/// Adds two meshes with 3 and 4 points, and elements with the given numbers of corners.
void AppendTwoMeshes(Geometry& geometry, const Corners& numCorners) {
  for (const std::uint32_t n : {3U, 4U}) {
    geometry.AppendVariable(MakeVariable("Coordinates", 0, NumericArray::Of(Ramp(3 * n, 0), 3)));
    geometry.AppendVariable(MakeVariable("Polylength", 5, NumericArray::Of(Count(1, n))));
  }
  for (const std::uint32_t n : numCorners) {
    geometry.AppendVariable(MakeVariable("Connectivity", 4, NumericArray::Of(Count(n, 0))));
  }
}

TEST_F(RyxCheck, FollowsLinksAndComparesMeshArrays) {
  const std::string path = SaveModel("links.ryx", [](Tree& tree) {
    auto& points = AddNode<Geometry>(tree, 1, "Points");
    points.AppendVariable(MakeVariable("Coordinates|A", 0, NumericArray::Of(Ramp(12, 0), 3)));
    points.AppendVariable(MakeLinked("Nowhere", {7, 0}));
    points.AppendVariable(MakeLinked("On", {2, 1}));
    points.AppendVariable(MakeLinked("Round", {2, 3}));
    auto& mesh = AddNode<Geometry>(tree, 1, "Mesh");
    mesh.AppendVariable(MakeLinked("Coordinates |A", {2, 0}));
    mesh.AppendVariable(MakeVariable("Coordinates", 0, NumericArray::Of(Ramp(15, 0), 3)));
    mesh.AppendVariable(MakeVariable("Connectivity|A", 4, NumericArray::Of(Count(5, 0))));
    mesh.AppendVariable(MakeVariable("Connectivity|B", 4, NumericArray::Of(Count(5, 0))));
    mesh.AppendVariable(MakeVariable("Polylength", 5, NumericArray::Of(Count(2, 2))));
    mesh.AppendVariable(MakeVariable("Polylength|B", 5, NumericArray::Of(Count(2, 3))));
    // As after a merge: correct, with a wrong second mesh, and one without a partner.
    for (const auto& [name, numCorners] :
         {std::pair("Pair", Corners{3, 4}), {"Wrong", {3, 9}}, {"Odd", {9}}}) {
      AppendTwoMeshes(AddNode<Geometry>(tree, 1, name), numCorners);
    }
  });
  ExpectGolden("check_links.txt", FindingsOf(path));
}

TEST_F(RyxCheck, ComparesResultsWithTheirGeometry) {
  const std::string path = SaveModel("results.ryx", [](Tree& tree) {
    BuildPlate(tree, {"Stress|LC1", "Heat|LC1", "Stress|LC1"}, 0, 12);
    Geometry& mesh = Mesh(tree);
    const auto add = [&mesh](const char* name, std::size_t count, std::uint8_t width = 1) {
      mesh.AppendVariable(MakeVariable(name, 12, NumericArray::Of(Ramp(count, 0), width)));
    };
    add("Too many", 13);
    auto& elements = AddNode<Geometry>(tree, PlateIds::kShape, "No points");
    elements.AppendVariable(MakeVariable("Polylength|LC1", 5, NumericArray::Of(Count(4, 0))));
    mesh.AppendVariable(MakeLinked("Polylength|LC1", {6, 0}));
    add("One a point|LC1", 36, 3);
    add("One an element", 4);
    add("None", 0);
    mesh.AppendVariable(MakeLinked("Linked", {PlateIds::kGeometry, 5}));
    // A second mesh, as after a merge.
    mesh.AppendVariable(MakeVariable("Coordinates|LC2", 0, NumericArray::Of(Ramp(18, 0), 3)));
    add("Five", 5);
    auto& points = AddNode<Geometry>(tree, PlateIds::kShape, "Elements unknown");
    points.AppendVariable(MakeLinked("Coordinates", {PlateIds::kGeometry, 0}));
    points.AppendVariable(MakeLinked("Connectivity", {PlateIds::kGeometry, 1}));
    points.AppendVariable(MakeVariable("May fit", 12, NumericArray::Of(Ramp(11, 0))));
    points.AppendVariable(MakeVariable("Cannot fit", 12, NumericArray::Of(Ramp(13, 0))));
  });
  ExpectGolden("check_results.txt", FindingsOf(path));
}

TEST_F(RyxCheck, FindsDataThatReadersDropFromTextsAndMaps) {
  const std::string path = SaveModel("texts.ryx", [](Tree& tree) {
    BuildPlate(tree, {"Stress"}, 0);
    AddViewPointPath(tree, "walk", 0);
    auto& hidden = tree.GetViewPoint().mViewState.mHiddenState;
    hidden.mHiddenEntities = {{"bolt", 1}, {"boot", 2}};
    hidden.mEntityData["lid"].mNames = {"rim"};
    tree.GetSequencerData().mSequences = {{"fore", {{}}}, {"forg", {{}}}};
  });
  ExpectFindings("check_texts.txt", ReadStreams(path));
}

TEST_F(RyxCheck, RefusesStreamsAboveTheLoadLimit) {
  const std::string zeros(std::size_t{2} << 20, '\0');
  const ScopedEnvironment limit("RYXMERGE_LOAD_LIMIT", "1000000");
  for (const std::string& stream : {kAttributes, kGlobalInformation, kViewPoints}) {
    Streams streams = ReadStreams(SavePlate());
    streams.erase(stream);
    QovJbf::JbFile file;
    for (const auto& [name, bytes] : streams) {
      file.GetIndex().Put(name, bytes.data(), bytes.size());
    }
    file.GetIndex().Put(stream, zeros.data(), zeros.size());
    file.AddBlockTransformation(stream, QovJbf::BlockFlag::kCompressed);
    WriteTo(file, mDir / "zeros.ryx");
    const std::string findings = FindingsOf(mDir / "zeros.ryx");
    EXPECT_THAT(findings, testing::StartsWith("error expansion @ stream \"" + stream + "\": It"));
    EXPECT_THAT(findings, HasSubstr("(limit 1000000 bytes"));
    EXPECT_EQ(std::count(findings.begin(), findings.end(), '\n'), 1);
  }
}

/// Builds a file of version 0.5, with inline values.
void PutGeometry(OldFile& old, const char* name, std::uint32_t kind, NumericArray values,
                 const std::string& version) {
  Geometry geometry("");
  geometry.AppendVariable(MakeVariable(name, kind, std::move(values)));
  geometry.EditVariable(0).mOffset = 0;
  old.PutGeometry(geometry, version);
}

TEST_F(RyxCheck, FindsInlineValuesOfOlderFiles) {
  OldFile old(4);
  PutGeometry(old, "Coordinates", 0, NumericArray::Of(Ramp(9, 0), 3), "0.5");
  old.PutRecord("", "NodeSets", "0.1");
  NodeSets sets("sets");
  sets.SetSets({{"left", {1, 2}}});
  sets.SaveDataBlocks(old.GetFile(), kHeavyData, false);
  sets.WriteLightData(old.GetFile(), kLightData);
  PutGeometry(old, "Connectivity", 4, NumericArray::Of(Count(3, 7)), "0.4");
  WriteTo(old.GetFile(), mDir / "old.ryx", "0.5");
  EXPECT_EQ(FindingsOf(mDir / "old.ryx"), "");
  const Streams streams = ReadStreams(mDir / "old.ryx");
  ExpectFindings("check_version_0.5.txt", streams, "0.5");
  ExpectFindings("check_version_0.2.txt", streams, "0.2");
  ExpectFindings("check_version_0.1.txt", streams, "0.1");
}

TEST_F(RyxCheck, FollowsTheChainOfIndexBlocks) {
  const ScopedEnvironment smallBlocks("TELMORAX_MAX_RYX_BLOCK_SIZE", "100");
  const std::string path = SaveModel("chain.ryx", [](Tree& tree) {
    for (std::uint32_t i = 0; i < 60; ++i) BuildPlate(tree, {"Stress"}, 0);
  });
  std::string bytes = ReadFile(path);
  bytes.replace(FindBlock(bytes, kItems + 19 * kItemSize), 27804, 27804, '\0');
  WriteFile(path, bytes);
  EXPECT_THAT(FindingsOf(path),
              HasSubstr("error unfinished @ stream \"\vIndex Block \", block 19"));
}

TEST_F(RyxCheck, ContinuesAfterDamageAndReportsUncheckedParts) {
  const ScopedEnvironment smallBlocks("TELMORAX_MAX_RYX_BLOCK_SIZE", "100");
  std::string bytes = ReadFile(SavePlate());
  char& damaged = bytes[FindBlock(bytes, bytes.find("Light Data") - 5) + 20];
  damaged = static_cast<char>(~damaged);
  WriteFile(mDir / "damaged.ryx", bytes + "x");
  const std::string found = FindingsOf(mDir / "damaged.ryx");
  EXPECT_THAT(found, HasSubstr("error block-damaged @ stream \"Light Data\", block "));
  EXPECT_THAT(found, HasSubstr("warning trailing-bytes"));
  EXPECT_THAT(found, HasSubstr("warning unchecked @ stream \"Light Data\", byte "));
  EXPECT_THAT(found, testing::Not(HasSubstr("stream-end")));
}

TEST_F(RyxCheck, TakesTimeProportionalToCounts) {
  constexpr std::uint32_t kMany = kIsSlow ? 5000 : 50000;
  Streams streams = ReadStreams(SavePlate());
  const std::string record = streams[kRyxTree].substr(kGeometry, kSets - kGeometry);
  std::string& tree = streams[kRyxTree] = streams[kRyxTree].substr(0, kSets);
  for (std::uint32_t i = 0; i < kMany; ++i) {
    tree += record;  // with the same descriptors
    Poke(tree, tree.size() - record.size(), 6 + i);
    Poke(tree, tree.size() - record.size() + kNext, 7 + i);
  }
  Poke(tree, 0, kMany + 4);
  WriteStreams(mDir / "records.ryx", streams);
  Tools::FileReport records(10);
  Tools::CheckFile(mDir / "records.ryx", records);
  EXPECT_GE(records.mFindings.GetNumErrors(), kMany);
  EXPECT_LT(records.mFindings.GetKept().size(), 200U);

  const ScopedEnvironment tinyBlocks("TELMORAX_MAX_RYX_BLOCK_SIZE", "1");
  const std::string path = SaveModel("blocks.ryx", [](Tree& model) {
    for (std::uint32_t i = 0; i < kMany / 100; ++i) AddNode<Group>(model, 1, "G");
  });
  EXPECT_EQ(FindingsOf(path), "");
}

TEST_F(RyxCheck, PrintsFindingsAsTextAndJson) {
  Streams streams = ReadStreams(SavePlate());
  Damage(streams[kLightData], "LC1+9 = 00");  // its width
  WriteStreams(mDir / "warned.ryx", streams);
  Poke(streams[kRyxTree], kGeometry + kParent, 2);
  streams[kHeavyData][12] = 40;
  WriteStreams(mDir / "damaged.ryx", streams);
  ExpectTranscript("check.txt");
}

}  // namespace
}  // namespace Qov::Test
