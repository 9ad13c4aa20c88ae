#include <array>
#include <cstring>
#include <filesystem>
#include <functional>

#include "Qov/Ryx/StreamNames.h"
#include "Qov/Util/Exception.h"
#include "check/FileCheck.h"
#include "ryxFixture.h"
#include "support/RandomModel.h"
#include "support/ScopedEnvironment.h"
#include "support/SharedModels.h"
#include "support/Streams.h"

namespace Qov::Test {
namespace {

using QovRyx::Geometry;
using QovRyx::kAttributes;
using QovRyx::kGlobalInformation;
using QovRyx::kHeavyData;
using QovRyx::kLightData;
using QovRyx::kResources;
using QovRyx::kRyxTree;
using QovRyx::kViewPoints;
using QovRyx::NodeSets;
using QovRyx::NumericArray;
using testing::HasSubstr;

template <class T>
void Poke(std::string& bytes, std::size_t at, T value) {
  ASSERT_LE(at + sizeof value, bytes.size());
  std::memcpy(bytes.data() + at, &value, sizeof value);
}

/// The place behind the first occurrence of a text.
std::size_t After(const std::string& bytes, const std::string& text) {
  const std::size_t at = bytes.find(text);
  EXPECT_NE(at, bytes.npos) << text;
  return at + text.size();
}

/// A descriptor's fields behind the name.
constexpr std::size_t kSize = 4 + 1;
constexpr std::size_t kWidth = kSize + 4;
constexpr std::size_t kOffset = kWidth + 1 + 11;

/// Where the records of the plate stand in the tree stream, and the fields in a record.
constexpr std::size_t kGroup = 48;
constexpr std::size_t kShape = 105;
constexpr std::size_t kGeometry = 161;
constexpr std::size_t kSets = 220;
constexpr std::size_t kParent = 4;
constexpr std::size_t kPrevious = 8;
constexpr std::size_t kNext = 12;
constexpr std::size_t kFirst = 16;

std::string FindingsOf(const std::string& path) {
  Tools::FileReport report(1000);
  Tools::CheckFile(path, report);
  std::string text;
  for (const Tools::Finding& finding : report.mFindings.GetKept()) {
    text += finding.mSeverity == Tools::Severity::Error ? "error " : "warning ";
    text += finding.mCode + " @ " + finding.mPlace.GetText() + ": " + finding.mText + "\n";
  }
  return text;
}

class RyxCheck : public RyxProgram {
 protected:
  struct Damage {
    const char* mExpected;  ///< Start of a line.
    std::function<void(Streams&)> mDo;
  };

  std::string SavePlate() const {
    return SaveModel("plate.ryx", [](QovRyx::Tree& tree) {
      BuildPlate(tree, {"Stress|LC1"}, 0);
      AddViewPointPath(tree, "walk", 2);
    });
  }

  /// Expects that each damage by itself is found.
  void ExpectFound(const std::vector<Damage>& damages) const {
    const Streams sound = ReadStreams(SavePlate());
    for (const Damage& damage : damages) {
      Streams streams = sound;
      damage.mDo(streams);
      WriteStreams(mDir / "damaged.ryx", streams);
      const std::string found = FindingsOf(mDir / "damaged.ryx");
      EXPECT_THAT("\n" + found, HasSubstr(std::string("\n") + damage.mExpected));
    }
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
    const char* expected = entry.path().filename() == "oldest.vpt" ? "warning no-model @ " : "";
    EXPECT_EQ(FindingsOf(entry.path()).substr(0, 19), expected) << entry.path();
  }
}

TEST_F(RyxCheck, FindsOnlyLostLinksInRandomModels) {
  for (std::uint32_t seed = 0; seed < 60; ++seed) {
    const std::string path =
        SaveModel("random.ryx", [seed](QovRyx::Tree& tree) { RandomModel(seed).Fill(tree); });
    Tools::FileReport report(1000);
    Tools::CheckFile(path, report);
    for (const Tools::Finding& finding : report.mFindings.GetKept()) {
      const bool isError = finding.mSeverity == Tools::Severity::Error;
      EXPECT_THAT(finding.mCode, testing::StartsWith(isError ? "link-" : "array-")) << seed;
    }
  }
}

TEST_F(RyxCheck, FindsDamageOfTheTree) {
  ExpectFound({
      {"error stream-end @ stream \"Ryx Tree\", byte 279: The stream ends",
       [](Streams& s) { Poke(s[kRyxTree], 0, 6); }},
      {"error tree-count @ stream \"Ryx Tree\", byte 0:",
       [](Streams& s) { Poke(s[kRyxTree], 0, 0); }},
      {"warning stream-rest @ stream \"Ryx Tree\", byte 279: 1 bytes",
       [](Streams& s) { s[kRyxTree] += 'x'; }},
      {"error stream-missing @ stream \"Ryx Tree\", byte 0:",
       [](Streams& s) { s[kRyxTree].clear(); }},
      {"error node-id @ stream \"Ryx Tree\", byte 4, node 7:",
       [](Streams& s) { Poke(s[kRyxTree], 4, 7); }},
      {"error node-id @ stream \"Ryx Tree\", byte 161, node 3 \"Skin\": There is another",
       [](Streams& s) { Poke(s[kRyxTree], kGeometry, 3); }},
      {"warning node-order @ stream \"Ryx Tree\", byte 220, node 5",
       [](Streams& s) { Poke(s[kRyxTree], kGeometry, 9); }},
      {"warning node-type @ stream \"Ryx Tree\", byte 105, node 3 \"Skin\":",
       [](Streams& s) { s[kRyxTree].replace(s[kRyxTree].find("Shape"), 5, "Sheep"); }},
      {"warning node-version @ stream \"Ryx Tree\", byte 48, node 2 \"Plate\":",
       [](Streams& s) { s[kRyxTree].replace(s[kRyxTree].find("0.4"), 3, "0.5"); }},
      {"error tree-link @ stream \"Ryx Tree\", byte 161, node 4 \"Skin\": It has no sibling",
       [](Streams& s) { Poke(s[kRyxTree], kGeometry + kParent, 2); }},
      {"error tree-link @ stream \"Ryx Tree\", byte 161, node 4 \"Skin\": Its parent should be",
       [](Streams& s) { Poke(s[kRyxTree], kGeometry + kParent, 99); }},
      {"error tree-link @ stream \"Ryx Tree\", byte 161, node 4 \"Skin\": It has no parent",
       [](Streams& s) { Poke(s[kRyxTree], kGeometry + kParent, 0); }},
      {"error tree-link @ stream \"Ryx Tree\", byte 105, node 3 \"Skin\": It has no sibling after",
       [](Streams& s) { Poke(s[kRyxTree], kShape + kNext, 0); }},
      {"error tree-link @ stream \"Ryx Tree\", byte 220, node 5 \"Sets\": Its previous sibling",
       [](Streams& s) { Poke(s[kRyxTree], kSets + kPrevious, 4); }},
      {"error tree-link @ stream \"Ryx Tree\", byte 48, node 2 \"Plate\": Its first child is node "
       "4",
       [](Streams& s) { Poke(s[kRyxTree], kGroup + kFirst, 4); }},
      {"error tree-reach @ stream \"Ryx Tree\", byte 161, node 4 \"Skin\": No link",
       [](Streams& s) { Poke(s[kRyxTree], kShape + kFirst, 0); }},
      {"error tree-circle @ stream \"Ryx Tree\", byte 105, node 3 \"Skin\": It is its own",
       [](Streams& s) { Poke(s[kRyxTree], kShape + kParent, 4); }},
  });
}

TEST_F(RyxCheck, FindsDamageOfLightDataAndAttributes) {
  ExpectFound({
      {"error light-offset @ stream \"Light Data\", byte 10, node 4 \"Skin\":",
       [](Streams& s) { Poke(s[kRyxTree], kSets - 8, 10); }},
      {"error light-offset @ stream \"Light Data\", byte 9999, node 4 \"Skin\":",
       [](Streams& s) { Poke(s[kRyxTree], kSets - 8, 9999); }},
      {"warning light-gap @ stream \"Light Data\", byte 180, node 5 \"Sets\": 3 bytes",
       [](Streams& s) {
         s[kLightData].insert(180, "gap");
         Poke(s[kRyxTree], s[kRyxTree].size() - 8, 183);
       }},
      {"error stream-end @ stream \"Light Data\", byte 196, node 5 \"Sets\":",
       [](Streams& s) { s[kLightData].resize(198); }},
      {"error variable-count @ stream \"Light Data\", byte 41, node 4 \"Skin\":",
       [](Streams& s) { Poke(s[kLightData], 41, -1); }},
      {"warning set-size @ stream \"Light Data\", byte 180, node 5 \"Sets\":",
       [](Streams& s) { Poke(s[kLightData], 180, 17); }},
      {"error attribute-type @ stream \"Attributes\", byte 0, node 2 \"Plate\":",
       [](Streams& s) { s[kAttributes][After(s[kAttributes], "unit") + 4] = 9; }},
      {"error attribute-columns @ stream \"Attributes\", byte 0, node 2 \"Plate\": 2 values",
       [](Streams& s) { s[kAttributes][After(s[kAttributes], "unit") + 5] = 3; }},
      {"error attribute-name @ stream \"Attributes\", byte 0, node 2 \"Plate\": There are two",
       [](Streams& s) { s[kAttributes].replace(s[kAttributes].find("unit"), 4, "mass"); }},
      {"error stream-end @ stream \"Attributes\", byte 63, node 2 \"Plate\":",
       [](Streams& s) { s[kAttributes].resize(70); }},
      {"warning unchecked @ stream \"Attributes\", byte ",
       [](Streams& s) { s[kLightData].resize(150); }},
      {"error stream-missing @ stream \"Attributes\", byte 0, node 2 \"Plate\":",
       [](Streams& s) { s.erase(kAttributes); }},
  });
}

TEST_F(RyxCheck, FindsDamageOfArraysAndSets) {
  const auto poke = [](const char* name, std::size_t field, auto value) {
    return [=](Streams& s) { Poke(s[kLightData], After(s[kLightData], name) + field, value); };
  };
  ExpectFound({
      {"error array-outside @ stream \"Heavy Data\", byte 9640, node 4 \"Skin\", result 2 "
       "\"Stress\x1ELC1\":",
       poke("LC1", kOffset, std::uint64_t{9640})},
      {"error array-outside @ stream \"Heavy Data\", byte 640, node 4 \"Skin\", result 2",
       poke("LC1", kSize, 0xFFFFFFF0U)},
      {"error array-overlap @ stream \"Heavy Data\", byte 600, node 4 \"Skin\", result 2",
       poke("LC1", kOffset, std::uint64_t{600})},
      {"warning array-shared @ stream \"Heavy Data\", byte 0, node 4 \"Skin\", result 2",
       poke("LC1", kOffset, std::uint64_t{0})},
      {"warning heavy-gap @ stream \"Heavy Data\", byte 640, node 4 \"Skin\", result 2",
       poke("LC1", kOffset, std::uint64_t{644})},
      {"warning array-width @ node 4 \"Skin\", result 2 \"Stress\x1ELC1\": Its width is 0",
       poke("LC1", kWidth, std::uint8_t{0})},
      {"warning array-width @ node 4 \"Skin\", result 2 \"Stress\x1ELC1\": It has 40 values",
       poke("LC1", kWidth, std::uint8_t{7})},
      {"warning array-size @ node 4 \"Skin\", result 2 \"Stress\x1ELC1\": Its size, 159",
       poke("LC1", kSize, 159U)},
      {"error connectivity @ node 4 \"Skin\", result 1 \"Connectivity\": Its value 40 at position "
       "12 ",
       [](Streams& s) { s[kHeavyData][12] = 40; }},
      {"error set-pieces @ stream \"Heavy Data\", byte 800, node 5 \"Sets\": There are 3 sets, but "
       "5 ends",
       [](Streams& s) {
         s[kHeavyData][800] = 5;
         s[kHeavyData].insert(804, 4, '\0');
       }},
      {"error set-pieces @ stream \"Heavy Data\", byte 800, node 5 \"Sets\": The ends of names do",
       [](Streams& s) { s[kHeavyData][808] = 9; }},
      {"error set-pieces @ stream \"Heavy Data\", byte 837, node 5 \"Sets\": The ends of values "
       "lead to 9",
       [](Streams& s) { s[kHeavyData][853] = 9; }},
      {"error stream-end @ stream \"Heavy Data\", byte 857, node 5 \"Sets\":",
       [](Streams& s) { s[kHeavyData][857] = 99; }},
      {"error array-outside @ stream \"Heavy Data\", byte 0, node 4",
       [](Streams& s) { s.erase(kHeavyData); }},
  });
}

TEST_F(RyxCheck, FindsDamageOfRecords) {
  ExpectFound({
      {"error record-size @ stream \"Resources\", byte 0, node 3 \"Skin\", material:",
       [](Streams& s) { Poke(s[kResources], 0, 5); }},
      {"error record-size @ stream \"Resources\", byte 0, node 3 \"Skin\", material:",
       [](Streams& s) { Poke(s[kResources], 0, 9999); }},
      {"error record-size @ stream \"Resources\", byte 0, node 3 \"Skin\", material: The fields",
       [](Streams& s) { Poke(s[kResources], 0, 80); }},
      {"warning record-tag @ stream \"Resources\", byte 0, node 3 \"Skin\", material: Tag \"0.9\"",
       [](Streams& s) { s[kResources].replace(8, 3, "0.9"); }},
      {"warning record-rest @ stream \"Resources\", byte 83, node 3 \"Skin\", material: 1 bytes",
       [](Streams& s) { s[kResources].replace(8, 3, "0.2"); }},
      {"error record-tag @ stream \"Resources\", byte 0, node 3 \"Skin\", material: The tag",
       [](Streams& s) { Poke(s[kResources], 4, 77); }},
      {"error stream-end @ stream \"Global Information\", byte ",
       [](Streams& s) { Poke(s[kGlobalInformation], 0, 2); }},
      {"error record-size @ stream \"View Points\", byte 181, current view: viewState.caeState:",
       [=](Streams& s) { Poke(s[kViewPoints], After(s[kViewPoints], "0.5"), 7); }},
      {"error view-count @ stream \"View Points\", byte ",
       [](Streams& s) { Poke(s[kViewPoints], After(s[kViewPoints], "walk"), -2); }},
      {"warning stream-rest @ stream \"View Points\", byte ",
       [](Streams& s) { s[kViewPoints] += "more"; }},
  });
}

TEST_F(RyxCheck, FollowsLinksAndComparesMeshArrays) {
  const std::string path = SaveModel("links.ryx", [](QovRyx::Tree& tree) {
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
  });
  EXPECT_EQ(FindingsOf(path),
            "error link-nowhere @ node 2 \"Points\", result 1 \"Nowhere\": Its link to node 7, "
            "result 0 leads nowhere: it has no values.\n"
            "error link-nowhere @ node 2 \"Points\", result 2 \"On\": Its link to node 2, result 1 "
            "leads nowhere: it has no values.\n"
            "error link-circle @ node 2 \"Points\", result 3 \"Round\": Its link to node 2, result "
            "3 leads round in a circle: it has no values.\n"
            "error connectivity @ node 3 \"Mesh\", result 2 \"Connectivity\x1E"
            "A\": Its value 4 "
            "at position 4 names a point that is not there: there are 4, from 0.\n"
            "error polylength @ node 3 \"Mesh\", result 3 \"Connectivity\x1E"
            "B\": It has 5 "
            "values, but the lengths of the elements sum up to 7.\n");
}

TEST_F(RyxCheck, FindsDamageOfTheContainer) {
  const std::string sound = ReadFile(SavePlate());
  const std::size_t items = 20;
  const auto firstSize = items + 133;
  struct Case {
    const char* mExpected;
    std::function<void(std::string&)> mDo;
  };
  const std::vector<Case> cases = {
      {"error magic @ byte 0 of the file:", [](std::string& b) { b[1] = 'X'; }},
      {"error version @ byte 8 of the file: Version \"1.4\"", [](std::string& b) { b[10] = '4'; }},
      {"warning version @ byte 8 of the file:", [](std::string& b) { b.replace(8, 3, "abc"); }},
      {"error unfinished @ byte 12 of the file:", [](std::string& b) { b.resize(12); }},
      {"error unfinished @ byte 12 of the file:",
       [](std::string& b) { std::fill(b.begin() + 12, b.begin() + 2800, '\0'); }},
      {"error index @ byte 12 of the file: The root index should take 2784 bytes",
       [](std::string& b) { b.resize(1000); }},
      {"error index @ byte 12 of the file: The index should list 21 blocks here, but 20",
       [](std::string& b) { b[16] = 21; }},
      {"error block-damaged @ stream \"Heavy Data\", block 0, byte 2800 of the file:",
       [](std::string& b) { b[2850] = static_cast<char>(~b[2850]); }},
      {"error block-damaged @ stream \"Heavy Data\", block 0, byte 2800 of the file: It says that "
       "it inflates to",
       [](std::string& b) { ++b[2800]; }},
      {"error block-damaged @ stream \"Heavy Data\", block 0, byte 2800 of the file: It says that "
       "it inflates to 4",
       [](std::string& b) { Poke(b, 2800, 0xFFFFFFFFU); }},
      {"error block-outside @ stream \"", [](std::string& b) { b.pop_back(); }},
      {"warning trailing-bytes @ byte ", [](std::string& b) { b += "more"; }},
      {"error block-damaged @ stream \"Ryx Tree\"", [=](std::string& b) { ++b[firstSize]; }},
      {"warning flags @ stream \"Heavy Data\", block 0:",
       [=](std::string& b) { b[firstSize + 4] = 3; }},
      {"warning unknown-stream @ stream \"Hairy Data\":",
       [](std::string& b) { b.replace(b.find("Heavy Data"), 10, "Hairy Data"); }},
      {"warning reserved-name @ stream \"\vmpty Block \", block ",
       [](std::string& b) { b.erase(b.find("\vEmpty") + 1, 1).insert(2700, 1, '\0'); }},
  };
  for (const Case& damage : cases) {
    std::string bytes = sound;
    damage.mDo(bytes);
    WriteFile(mDir / "damaged.ryx", bytes);
    EXPECT_THAT("\n" + FindingsOf(mDir / "damaged.ryx"),
                HasSubstr(std::string("\n") + damage.mExpected));
  }
}

/// A file of version 0.5: the values of two geometries, with sets between them.
class OldFile {
 public:
  OldFile() {
    mIndex.GetWritingBlockIndex(kLightData);
    mIndex.Put(kRyxTree, std::int32_t{4});
    PutRecord({1, 0, 0, 0, 2, 4}, "", "");
    PutRecord({2, 1, 0, 3, 0, 0}, "Geometry", "0.5");
    PutGeometry("Coordinates", 0, NumericArray::Of(Ramp(9, 0), 3), "0.5");
    PutRecord({3, 1, 2, 4, 0, 0}, "NodeSets", "0.1");
    NodeSets sets("sets");
    sets.SetSets({{"left", {1, 2}}});
    sets.SaveDataBlocks(mFile, kHeavyData);
    sets.WriteLightData(mFile, kLightData);
    PutRecord({4, 1, 3, 0, 0, 0}, "Geometry", "0.4");
    PutGeometry("Connectivity", 4, NumericArray::Of(Count(3, 7)), "0.4");
  }

  QovJbf::JbFile mFile;

 private:
  void PutRecord(const std::array<std::uint32_t, 6>& links, const std::string& type,
                 const std::string& version) {
    for (const std::uint32_t link : links) mIndex.Put(kRyxTree, link);
    for (const std::string& text : {std::string(), type, version}) mIndex.Put(kRyxTree, text);
    mIndex.Put(kRyxTree, static_cast<std::uint32_t>(mIndex.GetStreamLength(kLightData)));
  }
  void PutGeometry(const char* name, std::uint32_t kind, NumericArray values,
                   const std::string& version) {
    Geometry geometry("");
    geometry.AppendVariable(MakeVariable(name, kind, std::move(values)));
    geometry.EditVariable(0).mOffset = 0;
    geometry.WriteJb(mFile, kLightData, kHeavyData, kAttributes, version);
  }

  QovJbf::Index& mIndex = mFile.GetIndex();
};

TEST_F(RyxCheck, CountsToTheValuesOfOlderFiles) {
  const std::string path = mDir / "old.ryx";
  OldFile old;
  WriteTo(old.mFile, path, "0.5");
  EXPECT_EQ(FindingsOf(path), "");
  Streams streams = ReadStreams(path);
  const std::string sound = streams[kHeavyData];
  streams[kHeavyData].resize(sound.size() - 4);
  WriteStreams(path, streams, "0.5");
  EXPECT_THAT(FindingsOf(path), HasSubstr("error array-outside @ stream \"Heavy Data\", byte 80, "
                                          "node 4, result 0 \"Connectivity\": It should end at"));
  streams[kHeavyData] = sound;
  streams[kHeavyData][36] = 9;  // the first count of the sets
  WriteStreams(path, streams, "0.5");
  EXPECT_THAT(FindingsOf(path), HasSubstr("error stream-end @ stream \"Heavy Data\", byte "));
  streams[kHeavyData] = sound;
  streams[kViewPoints] = "anything";
  for (const char* version : {"0.1", "0.2"}) {
    WriteStreams(path, streams, version);
    const bool isOldest = version == std::string("0.1");
    EXPECT_EQ(FindingsOf(path).substr(0, 20),
              isOldest ? "warning views-unread" : "error views-unread @");
  }
}

TEST_F(RyxCheck, FollowsTheChainOfIndexBlocks) {
  const ScopedEnvironment smallBlocks("TELMORAX_MAX_RYX_BLOCK_SIZE", "100");
  const std::string path = SaveModel("chain.ryx", [](QovRyx::Tree& tree) {
    for (std::uint32_t i = 0; i < 60; ++i) BuildPlate(tree, {"Stress"}, 0);
  });
  std::string bytes = ReadFile(path);
  std::size_t at = 2800;  // of the first index block, item 19
  for (std::size_t k = 0; k < 19; ++k) {
    std::uint32_t size = 0;
    std::memcpy(&size, bytes.data() + 20 + k * 139 + 133, sizeof size);
    at += size;
  }
  std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), 27804, '\0');
  WriteFile(path, bytes);
  EXPECT_THAT(FindingsOf(path),
              HasSubstr("error unfinished @ stream \"\vIndex Block \", block 19"));
}

TEST_F(RyxCheck, GoesOnBehindDamageAndSaysWhatIsNotChecked) {
  const ScopedEnvironment smallBlocks("TELMORAX_MAX_RYX_BLOCK_SIZE", "100");
  std::string bytes = ReadFile(SavePlate());
  const std::size_t light = bytes.find("Light Data") - 5;
  std::size_t at = 2800;
  for (std::size_t item = 20; item != light; item += 139) {
    std::uint32_t size = 0;
    std::memcpy(&size, bytes.data() + item + 133, sizeof size);
    at += size;
  }
  bytes[at + 20] = static_cast<char>(~bytes[at + 20]);
  WriteFile(mDir / "damaged.ryx", bytes + "x");
  const std::string found = FindingsOf(mDir / "damaged.ryx");
  EXPECT_THAT(found, HasSubstr("error block-damaged @ stream \"Light Data\", block "));
  EXPECT_THAT(found, HasSubstr("warning trailing-bytes"));
  EXPECT_THAT(found, HasSubstr("warning unchecked @ stream \"Light Data\", byte "));
  EXPECT_EQ(found.find("stream-end"), found.npos) << found;
}

TEST_F(RyxCheck, TakesTimeInProportionForAMillionOfAnything) {
  constexpr std::uint32_t kMany = 50000;
  Streams streams = ReadStreams(SavePlate());
  const std::string record = streams[kRyxTree].substr(kGeometry, kSets - kGeometry);
  std::string& tree = streams[kRyxTree] = streams[kRyxTree].substr(0, kSets);
  for (std::uint32_t i = 0; i < kMany; ++i) {
    tree += record;  // all of them with the same descriptors
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
  const std::string path = SaveModel("blocks.ryx", [](QovRyx::Tree& model) {
    for (std::uint32_t i = 0; i < 500; ++i) AddNode<QovRyx::Group>(model, 1, "G");
  });
  EXPECT_EQ(FindingsOf(path), "");
}

TEST_F(RyxCheck, TellsFindingsAsTextAndJson) {
  const std::string path = SavePlate();
  Streams streams = ReadStreams(path);
  Poke(streams[kLightData], After(streams[kLightData], "LC1") + kWidth, std::uint8_t{0});
  WriteStreams(mDir / "warned.ryx", streams);
  Poke(streams[kRyxTree], kGeometry + kParent, 2);
  streams[kHeavyData][12] = 40;
  WriteStreams(mDir / "damaged.ryx", streams);
  WriteFile(mDir / "text", "no container");
  const std::vector<std::string> files = {path, mDir / "warned.ryx", mDir / "damaged.ryx"};
  const auto run = [&](std::vector<std::string> arguments, std::size_t numFiles) {
    arguments.insert(arguments.begin(), "check");
    arguments.insert(arguments.end(), files.begin(),
                     files.begin() + static_cast<std::ptrdiff_t>(numFiles));
    return Run(arguments);
  };
  EXPECT_EQ(run({}, 2).mStatus, 0);
  const Outcome text = run({"--limit", "1"}, 3);
  EXPECT_EQ(text.mStatus, 1);
  EXPECT_EQ(text.mErr, "");
  ExpectGolden("check.txt", text.mOut);

  const Outcome json = run({"--json", mDir / "text", mDir / "none"}, 3);
  EXPECT_EQ(json.mStatus, 2);
  EXPECT_EQ(Normalized(json.mErr),
            "ryx check: text: It is no ryx container\nryx check: none: Unable to open file "
            "\"none\"\n");
  const Tools::Json list = ParseJson(json, "check")["files"];
  ASSERT_EQ(list.size(), 5U);
  EXPECT_EQ(list[0]["status"], "unreadable");
  EXPECT_EQ(list[2]["status"], "sound");
  EXPECT_EQ(list[3]["findings"][0]["result"]["name"], "Stress\x1ELC1");
  EXPECT_EQ(list[4]["findings"][0]["streamByte"], kShape);
}

}  // namespace
}  // namespace Qov::Test
