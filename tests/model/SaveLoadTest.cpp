#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <functional>
#include <sstream>
#include <utility>

#include "Qov/Log/Manager.h"
#include "Qov/Ryx/Progress.h"
#include "Qov/Util/SingletonHolder.h"
#include "model/StreamNames.h"
#include "support/Errors.h"
#include "support/Files.h"
#include "support/ModelCompare.h"
#include "support/ScopedEnvironment.h"
#include "support/SharedModels.h"
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

TEST(Save, RecordsTheMachineOnRequest) {
  const TempDir dir;
  Tree tree(true);
  SaveTree(tree, dir / "a.ryx");
  Tree loaded(false);
  LoadTree(loaded, dir / "a.ryx");
  std::array<char, 256> host{};
  ASSERT_EQ(::gethostname(host.data(), host.size() - 1), 0);
  EXPECT_EQ(loaded.GetModifiers().back().mHost, host.data());
}

/// All results have the same name.
TEST(Save, StoresIntegerArraysFirstAndEmptyOnesWithoutBytes) {
  const TempDir dir;
  Tree tree(false);
  Geometry& geometry = AddNode<Geometry>(tree, 1, "g");
  geometry.AppendVariable(MakeVariable("same", 12, NumericArray::Of(Count(3, 0x01020304))));
  geometry.AppendVariable(MakeVariable("same", 12, {}));
  geometry.AppendVariable(MakeVariable("same", 6, NumericArray::Of(Count(2, 0x0A0B0C0D))));
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
  EXPECT_EQ(DescribeModel(dir / "a.ryx"), DescribeModel(tree));
}

TEST(Save, RefusesAnOutputThatIsAnInput) {
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

/// Runs an action after the first array of a model has been written.
class DuringSave : public ProgressListener {
 public:
  explicit DuringSave(std::function<void()> action) : mAction(std::move(action)) {
    SetProgressListener(this);
  }
  ~DuringSave() override { SetProgressListener(nullptr); }
  DuringSave(const DuringSave&) = delete;
  DuringSave& operator=(const DuringSave&) = delete;

  void Start(std::uint64_t /*numBytes*/) override {}
  void Advance(std::uint64_t /*numBytes*/) override {
    std::exchange(mAction, [] {})();
  }
  void Finish() override {}

 private:
  std::function<void()> mAction;
};

TEST(Save, RefusesInputsThatChangedSinceTheyWereLoaded) {
  const TempDir dir;
  const std::string input = dir / "a.ryx";
  const std::string output = dir / "out.ryx";
  const auto touch = [&] { WriteFile(input, ReadFile(input)); };
  const auto expectRefusal = [&](Tree& tree) {
    ExpectError(ErrorType::ReadError, "\"" + input + "\" changed while it was read",
                [&] { SaveTree(tree, output); });
  };
  SaveSample(input);
  Tree during(false);
  LoadTree(during, input);
  {
    const DuringSave change(touch);
    expectRefusal(during);
  }
  Tree loaded(false);
  EXPECT_THROW(LoadTree(loaded, output), Qov::Util::Exception)
      << "the incomplete output must not be readable";

  WriteFile(output, "precious");
  Tree before(false);
  LoadTree(before, input);
  touch();
  expectRefusal(before);
  Tree bare(false);
  SaveTree(bare, input);
  Tree withoutArrays(false);
  LoadTree(withoutArrays, input);
  touch();
  expectRefusal(withoutArrays);
  EXPECT_EQ(ReadFile(output), "precious");

  Tree updated(false);
  LoadTree(updated, input);
  updated.Save(input, false, "", Tree::SupportedFileFormats::Ryx);
  EXPECT_NO_THROW(SaveTree(updated, output)) << "a save updates the identity of its input";
}

class Impostor : public Node {
 public:
  explicit Impostor(std::string type) : Node("no such thing"), mType(std::move(type)) {}
  std::string GetType() const override { return mType; }

 private:
  std::string mType;
};

TEST(SaveDeathTest, StopsAtANodeOfAWrongClass) {
  const TempDir dir;
  for (const auto& [type, text] : {std::pair("Group", "0 != grp_ptr"),
                                   {"Shape", "0 != shape_ptr"},
                                   {"Geometry", "0 != geom_ptr"},
                                   {"NodeSets", "0 != node_sets_ptr"}}) {
    Tree tree(false);
    AddNode(tree, 1, std::make_unique<Impostor>(type));
    EXPECT_DEATH(SaveTree(tree, dir / "a.ryx"), text);
  }
}

/// A model that could not be loaded again is not saved.
TEST(Save, RefusesModelsThatAreTooLargeToLoad) {
  const TempDir dir;
  const auto limitTo = [](std::size_t limit) {
    return ScopedEnvironment("RYXMERGE_LOAD_LIMIT", std::to_string(limit));
  };
  SaveSample(dir / "a.ryx");
  Tree tree(false);
  LoadTree(tree, dir / "a.ryx");
  const std::string expected = DescribeModel(tree);
  const Streams streams = ReadStreams(dir / "a.ryx");
  std::size_t treeSize = 0;
  for (const std::string& name : {kRyxTree, kLightData, kAttributes, kResources}) {
    treeSize += streams.at(name).size();
  }
  const std::size_t viewSize = streams.at(kViewPoints).size();
  ASSERT_GT(viewSize, treeSize);
  {
    const auto limit = limitTo(viewSize);
    SaveTree(tree, dir / "b.ryx");
    EXPECT_EQ(DescribeModel(dir / "b.ryx"), expected);
  }
  for (const auto& [most, what] : {std::pair(viewSize - 1, "The views decompress to"),
                                   {treeSize - 1, "The descriptions of nodes and results"}}) {
    const auto limit = limitTo(most);
    const std::string text = "(limit " + std::to_string(most) + " bytes;";
    ExpectError(ErrorType::OutOfBounds, what, [&] { SaveTree(tree, dir / "c.ryx"); });
    ExpectError(ErrorType::OutOfBounds, text, [&] { SaveTree(tree, dir / "c.ryx"); });
    ExpectError(ErrorType::OutOfBounds, what, [&] { DescribeModel(dir / "b.ryx"); });
  }
}

TEST(Load, PutsEntriesWithoutAParentBelowTheGroup) {
  const TempDir dir;
  Tree tree(false);
  NodeTree::Node entry;
  entry.mId = 2;
  entry.mData = std::make_unique<Group>("No parent");
  tree.GetNodes().PutNode(std::move(entry));
  SaveTree(tree, dir / "a.ryx");
  Tree merged(false);
  MakeMergeRoot(merged);
  MergeFile(merged, dir / "a.ryx");
  EXPECT_EQ(merged.GetNodes().GetReqNode(3).mParent, 1U);
  EXPECT_EQ(DescribeModel(dir / "a.ryx"), DescribeModel(tree));
}

TEST(Load, KeepsIdsInANewTreeAndShiftsThemBelowAGroup) {
  const TempDir dir;
  SaveSample(dir / "a.ryx");
  const auto load = [&](Tree& tree) {
    Tree::IdMap ids;
    tree.Load(dir / "a.ryx", ids, Tree::ReadMode::Everything, Tree::SupportedFileFormats::Ryx);
    return ids;
  };
  Tree fresh(false);
  EXPECT_EQ(load(fresh), (Tree::IdMap{{1, 1}, {2, 2}, {3, 3}, {4, 4}, {5, 5}}));
  Tree merged(false);
  MakeMergeRoot(merged);
  EXPECT_EQ(load(merged), (Tree::IdMap{{2, 1}, {3, 2}, {4, 3}, {5, 4}, {6, 5}}));
  MergeFile(merged, dir / "a.ryx");
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

/// The streams of a sample model, which the tests damage.
class DamagedModel : public testing::Test {
 protected:
  DamagedModel() {
    SaveSample(mPath);
    mStreams = ReadStreams(mPath);
  }
  std::function<void()> LoadOf(const Streams& streams) {
    WriteStreams(mPath, streams);
    return [this] { DescribeModel(mPath); };
  }

  const TempDir mDir;
  const std::string mPath = mDir / "a.ryx";
  Streams mStreams;
};

TEST_F(DamagedModel, MissingAndTruncatedStreamsAreErrors) {
  for (const auto& [name, bytes] : mStreams) {
    SCOPED_TRACE(name);
    Streams damaged = mStreams;
    for (std::size_t length = 0; length < bytes.size(); length += 1 + bytes.size() / 50) {
      damaged[name] = bytes.substr(0, length);
      ExpectError(ErrorType::OutOfBounds, "", LoadOf(damaged));
    }
    damaged.erase(name);
    if (name == kGlobalInformation || name == kViewPoints) {
      EXPECT_NO_THROW(LoadOf(damaged)());
    } else {
      ExpectError(ErrorType::ElementNotFound, "Element Not Found", LoadOf(damaged));
    }
  }
}

TEST_F(DamagedModel, InvalidTreesAreErrors) {
  struct WrongNumber {
    std::size_t mAt;
    std::uint32_t mNumber;
    ErrorType mError;
  };
  constexpr std::size_t kRecord = 4 + 24 + 12 + 8;  // after the count and the record of the root
  for (const WrongNumber& wrong : std::initializer_list<WrongNumber>{
           {0, 0, ErrorType::ModelError},
           {0, 0xFFFFFFFF, ErrorType::ModelError},
           {0, 0x7FFFFFFF, ErrorType::OutOfBounds},
           {4, 9, ErrorType::ModelError},           // the first record is not the root
           {kRecord, 1, ErrorType::ElementExists},  // two roots
           {kRecord, 0, ErrorType::ElementExists},  // 0 means none
           {kRecord, 0xFFFFFFFF, ErrorType::ModelError}}) {
    Streams damaged = mStreams;
    std::memcpy(damaged[kRyxTree].data() + wrong.mAt, &wrong.mNumber, sizeof wrong.mNumber);
    ExpectError(wrong.mError, "", LoadOf(damaged));
  }
}

TEST(Load, RefusesOtherFiles) {
  const TempDir dir;
  WriteFile(dir / "empty", "");
  WriteFile(dir / "text", "a text file, not a model");
  for (const std::string& path : {dir / "empty", dir / "text"}) {
    ExpectError(ErrorType::FormatNotSupported, path + " is not a Ryx file",
                [&] { DescribeModel(path); });
  }
  for (const std::string& path : {dir / "missing", dir.GetPath().string()}) {
    ExpectError(ErrorType::MiscellaneousError, "Unable to open file \"" + path + "\"",
                [&] { DescribeModel(path); });
  }
}

TEST(Load, ReportsUnknownStreams) {
  const TempDir dir;
  SaveSample(dir / "a.ryx");
  Streams streams = ReadStreams(dir / "a.ryx");
  streams["View Point\x13"] = streams.extract(kViewPoints).mapped();
  streams["Empty"] = "";
  streams["\vEmptf Block 7"] = streams["Another"] = "bytes";
  WriteStreams(dir / "b.ryx", streams);
  Tree tree(false);
  LoadTree(tree, dir / "b.ryx");
  EXPECT_EQ(tree.GetUnknownStreams(), (std::vector<std::string>{"Another", "View Point\x13"}));
  MakeMergeRoot(tree);
  MergeFile(tree, dir / "a.ryx");
  EXPECT_TRUE(tree.GetUnknownStreams().empty());
}

TEST(Load, KeepsTheViewsOfSampleFilesByteForByte) {
  const TempDir dir;
  for (const char* name : {"plate.vpt", "more.vpt"}) {
    const std::string path = FindSharedModel(name);
    if (path.empty()) GTEST_SKIP() << "no sample model " << name;
    QovJbf::JbFile file;
    file.OpenFile(path, "rb");
    Tree tree(false);
    tree.LoadViewPathVec(file);
    EXPECT_FALSE(tree.GetViewPointPaths().empty());
    SaveTree(tree, dir / "saved");
    EXPECT_EQ(ReadStreams(dir / "saved").at(kViewPoints), ReadStreams(path).at(kViewPoints));
  }
}

/// Returns the progress messages that loading a file logs.
std::string TraceOfLoading(Tree& tree, const std::string& path) {
  std::ostringstream trace;
  auto& manager = Util::SingletonHolder<Log::Manager>::Instance();
  manager.TraceTo("loading", std::make_unique<Log::StreamPublisher>(trace));
  LoadTree(tree, path);
  manager.TraceTo("loading", std::make_unique<Log::NullPublisher>());
  return trace.str();
}

TEST(Load, RecognisesOldProbeRecordsAlsoAfterMerges) {
  const TempDir dir;
  struct Case {
    const char* mVersion;
    const char* mLaterProgram;
    bool mLastIsLegacy;
    bool mIsLogged;
  };
  for (const Case& c : {Case{"2010 R1 4,1,311,217", nullptr, true, true},
                        Case{"2010 R1 4.1.311.217", nullptr, false, false},
                        Case{"2010 R1 4,1,311,217", "RyxMerge", false, true},
                        Case{"2010 R1 4,1,311,217", "", false, true},
                        Case{"2010 R1 4,1,311,217", "viewer", false, false}}) {
    Tree tree("viewer", c.mVersion, false);
    tree.SetHasViewPoints(true);
    SaveTree(tree, dir / "a.ryx");
    if (c.mLaterProgram != nullptr) {
      Tree merged(c.mLaterProgram, "", false);
      LoadTree(merged, dir / "a.ryx");
      SaveTree(merged, dir / "a.ryx");
    }
    Tree loaded(false);
    const std::string trace = TraceOfLoading(loaded, dir / "a.ryx");
    EXPECT_EQ(g_b217Ryx, c.mLastIsLegacy) << c.mVersion;
    EXPECT_EQ(trace.find(c.mVersion) != trace.npos, c.mIsLogged) << trace;
  }
}

/// Replaces each occurrence of a text in a stream by a text of the same length.
void Overwrite(std::string& bytes, const std::string& from, const std::string& to) {
  ASSERT_NE(bytes.find(from), bytes.npos);
  for (std::size_t at = 0; (at = bytes.find(from, at)) != bytes.npos; at += to.size()) {
    bytes.replace(at, to.size(), to);
  }
}

TEST_F(DamagedModel, EqualKeysAndTextsWithZeroBytesAreCounted) {
  Tree tree("viewer", "1-more", false);
  auto group = std::make_unique<Group>("parts");
  group->mAttributes = {{"key1", 1.0}, {"key2", 2.0}, {"key3", 3.0}};
  tree.GetNodes().SetCurrentId(1);
  tree.GetNodes().AddChild(std::move(group));
  tree.GetViewPoint().mViewState.mHiddenState.mHiddenEntities = {{"key1", 1}, {"key2", 2}};
  tree.GetViewPoint().mName = "first-second";
  tree.SetHasViewPoints(true);
  SaveTree(tree, mPath);
  Streams streams = ReadStreams(mPath);
  Overwrite(streams[kAttributes], "key2", "key1");
  Overwrite(streams[kAttributes], "key3", "key1");
  Overwrite(streams[kViewPoints], "key2", "key1");
  Overwrite(streams[kViewPoints], "first-second", std::string("first\0second", 12));
  Overwrite(streams[kGlobalInformation], "1-more", std::string("1\0more", 6));
  WriteStreams(mPath, streams);

  Tree loaded(false);
  const std::string trace = TraceOfLoading(loaded, mPath);
  const auto& read = dynamic_cast<const Group&>(*loaded.GetNodes().GetReqNode(2).mData);
  EXPECT_EQ(read.mAttributes, (QovUtil::AttributeMap{{"key1", 1.0}}));
  const auto& hidden = loaded.GetViewPoint().mViewState.mHiddenState.mHiddenEntities;
  EXPECT_EQ(hidden, (std::map<std::string, std::uint8_t>{{"key1", 1}}));
  const auto counts = [](const QovJbf::ReadLosses& lost) {
    return std::array{lost.mNumEqualKeys, lost.mNumCutTexts};
  };
  const Tree::Losses& losses = loaded.GetLosses();
  EXPECT_EQ(counts(losses.mModel), (std::array<std::uint64_t, 2>{2, 0}));
  EXPECT_EQ(counts(losses.mHistory), (std::array<std::uint64_t, 2>{0, 1}));
  EXPECT_EQ(counts(losses.mViews), (std::array<std::uint64_t, 2>{1, 1}));
  for (const char* line : {"model: 2 map entries are left out because earlier ones have their keys",
                           "history: 1 text is cut at a zero byte",
                           "views: 1 map entry is left out because an earlier one has its key"}) {
    EXPECT_NE(trace.find(line), trace.npos) << trace;
  }
}

}  // namespace
}  // namespace Qov::Test
