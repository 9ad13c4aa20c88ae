#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <functional>

#include "app/MergeOptions.h"
#include "model/StreamNames.h"
#include "ryxFixture.h"
#include "support/BuildKind.h"
#include "support/Files.h"
#include "support/OldFile.h"
#include "support/Streams.h"

namespace Qov::Test {
namespace {

using namespace QovRyx;
using testing::HasSubstr;

/// Small models that would need much time or memory if the work grew with the square of a count.
/// Both programs must process or refuse them quickly.
class HostileInput : public RyxProgram {
 protected:
  static constexpr std::uint32_t kMany = kIsSlow ? 5000 : 50000;

  HostileInput() {
    mSurroundings.mEnvironment["PELORIN_TEMP_PATH"] = mDir.GetPath().string();
    constexpr rlim_t kSeconds = 10;  // of CPU time; correct runs take tenths of a second
    if (!kIsSlow) mSurroundings.mLimits[RLIMIT_CPU] = kSeconds;
    if (!kIsSanitized) mSurroundings.mLimits[RLIMIT_AS] = rlim_t{1} << 30;
  }

  Outcome Merge(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), RYXMERGE_PROGRAM);
    return RunProgram(arguments, mSurroundings);
  }
  std::string Plate(const std::string& name) const {
    SavePlate(mDir / name, {"Stress|LC1", "Stress|LC2"}, 1);
    return mDir / name;
  }
  std::string Views(const std::string& name) const {
    SaveViewPointFile(mDir / name, name);
    return mDir / name;
  }
  static bool Exists(const std::string& path) {
    return std::filesystem::exists(std::filesystem::symlink_status(path));
  }
  static void FillWithNames(Tree& tree, std::size_t count,
                            const std::function<std::string(std::size_t)>& nameOf) {
    Geometry& geometry = AddNode<Geometry>(tree, 1, "Mesh");
    for (std::size_t i = 0; i < count; ++i) {
      geometry.AppendVariable(MakeVariable(nameOf(i), 12, {}));
    }
  }
  /// Saves a model whose instances have results in common, all with the same attributes.
  std::string SaveShared(const std::string& name, std::size_t numCommon, std::size_t numInstances,
                         const QovUtil::Attributes& attributes) const {
    return SaveModel(name, [&](Tree& tree) {
      FillWithNames(tree, numCommon + numInstances, [numCommon](std::size_t i) {
        return (i < numCommon ? "C" : "S|") + std::to_string(i);
      });
      Geometry& geometry = *AsGeometry(tree.GetNodes().GetReqNode(2));
      for (std::size_t i = 0; i < numCommon; ++i) geometry.EditVariable(i).mAttributes = attributes;
    });
  }
  /// Runs all commands that read models. RyxMerge is first, because verify reads its output.
  void ExpectAllPass(const std::string& model) {
    for (const MergeOptions& kind : ListMergeKinds()) {
      const std::vector<std::string> options = kind.GetNames();
      std::vector<std::string> arguments = options;
      arguments.insert(arguments.end(), {model, model, mOutput});
      EXPECT_EQ(Merge(arguments).mStatus, 0) << options.size() << model;
      arguments.insert(arguments.begin(), "plan");
      EXPECT_EQ(Run(arguments).mStatus, 0) << options.size() << model;
    }
    EXPECT_EQ(Merge({model, Views("views.vpt"), mOutput}).mStatus, 0) << model;
    EXPECT_EQ(Run({"verify", mOutput, model, mDir / "views.vpt"}).mStatus, 0) << model;
    for (const char* command : {"ls", "info"}) EXPECT_EQ(Run({command, model}).mStatus, 0) << model;
    EXPECT_LE(Run({"check", model}).mStatus, 1) << model;
    EXPECT_EQ(Run({"diff", model, model}).mStatus, 0) << model;
  }
  /// Expects that a merge as instances fails with that text, and that plan predicts it.
  void ExpectRefusal(const std::string& model, const std::string& text) {
    const Outcome outcome = Merge({"--merge-as-instances", model, model, mOutput});
    EXPECT_EQ(outcome.mStatus, 2) << model;
    EXPECT_THAT(outcome.mErr, HasSubstr(text));
    EXPECT_THAT(outcome.mErr, HasSubstr("The file was \"" + model));
  }

  const std::string mOutput = mDir / "out.ryx";
  const std::string mLog = mDir / "RyxMerge_trace.log";
};

TEST_F(HostileInput, TimeIsProportionalToCounts) {
  ExpectAllPass(SaveModel("chain.ryx", [](Tree& tree) {
    for (std::uint32_t i = 1; i <= kMany; ++i) AddNode<Group>(tree, i, "Group");
  }));
  ExpectAllPass(SaveModel("names.ryx", [](Tree& tree) {
    FillWithNames(tree, kMany, [](std::size_t) { return "Stress|LC1"; });
  }));
  ExpectAllPass(SaveModel("links.ryx", [](Tree& tree) {
    Geometry& geometry = AddNode<Geometry>(tree, 1, "Mesh");
    for (std::uint32_t i = 0; i < kMany; ++i) {
      geometry.AppendVariable(MakeLinked("Stress|LC1", {2, i < kMany / 2 ? i + 1 : kMany}));
    }
    geometry.AppendVariable(MakeVariable("Stress|LC2", 12, NumericArray::Of(Ramp(9, 1.0F))));
  }));
  ExpectAllPass(SaveModel("common links.ryx", [](Tree& tree) {
    Geometry& geometry = AddNode<Geometry>(tree, 1, "Mesh");
    for (std::uint32_t i = 0; i < kMany; ++i) {
      geometry.AppendVariable(MakeLinked("Mass" + std::to_string(i), {2, i + 1}));
    }
    geometry.AppendVariable(MakeVariable("Stress|LC1", 12, NumericArray::Of(Ramp(9, 1.0F))));
    geometry.AppendVariable(MakeLinked("Mass0|LC2", {2, 0}));
  }));
  ExpectAllPass(SaveModel("attributes.ryx", [](Tree& tree) {
    Group& group = AddNode<Group>(tree, 1, "Group");
    QovUtil::AttributeMap attributes;
    for (std::uint32_t i = 0; i < kMany; ++i) attributes[std::to_string(i)] = i;
    group.mAttributes = attributes;
  }));
}

TEST_F(HostileInput, NumberOfGeneratedLinksIsLimited) {
  const std::string model = SaveModel("square.ryx", [](Tree& tree) {
    FillWithNames(tree, 6000, [](std::size_t i) {
      return (i % 2 == 0 ? "Common" : "Stress|LC") + std::to_string(i);
    });
  });
  ExpectRefusal(model, "Too many instances would share too many results");
  const Outcome plan = Run({"plan", "--merge-as-instances", model, model, mOutput});
  EXPECT_EQ(plan.mStatus, 1);
  EXPECT_THAT(plan.mOut, HasSubstr("Too many instances would share too many results"));
  ExpectRefusal(SaveModel("long.ryx",
                          [](Tree& tree) {
                            FillWithNames(tree, 6000, [](std::size_t i) {
                              return i == 0 ? std::string(100000, 'C') : "S|" + std::to_string(i);
                            });
                          }),
                "Too many instances would share too many results");
  // The first file determines the number of links that the second one adds.
  const std::string first = SaveModel("first.ryx", [](Tree& tree) {
    FillWithNames(tree, 1, [](std::size_t) { return "Common|0"; });
    auto& attributes = AsGeometry(tree.GetNodes().GetReqNode(2))->EditVariable(0).mAttributes;
    attributes["note"] = std::string(1000000, 'n');
  });
  const std::string second = SaveModel("second.ryx", [](Tree& tree) {
    FillWithNames(tree, 6000,
                  [](std::size_t i) { return i == 0 ? "Common" : "S|" + std::to_string(i - 1); });
  });
  EXPECT_EQ(Merge({"--merge-as-instances", first, second, mOutput}).mStatus, 2);
}

TEST_F(HostileInput, DecompressionIsLimited) {
  OldFile file(1);
  const std::string zeros(std::size_t{50} << 20, '\0');
  file.GetIndex().Put(kResources, zeros.data(), zeros.size());
  file.GetFile().AddBlockTransformation(kResources, QovJbf::BlockFlag::kCompressed);
  WriteTo(file.GetFile(), mDir / "zeros.ryx", "0.5");
  mSurroundings.mEnvironment["RYXMERGE_LOAD_LIMIT"] = "40000000";
  ExpectRefusal(mDir / "zeros.ryx", "(limit 40000000 bytes");
  EXPECT_EQ(Run({"check", mDir / "zeros.ryx"}).mStatus, 1);
}

/// Uses inputs that compress well.
TEST_F(HostileInput, OutputsOfMergesStayWithinTheLimits) {
  constexpr std::size_t kViews = kIsSlow ? 2000 : 60000;
  constexpr std::size_t kCommon = kIsSlow ? 60 : 600;
  constexpr std::size_t kInstances = kIsSlow ? 50 : 500;
  const std::string views = SaveModel("views.vpt", [](Tree& tree) {
    AddViewPointPath(tree, "walk", kViews);
    tree.SetHasViewPoints(true);
  });
  WriteStreams(views, {{kViewPoints, ReadStreams(views)[kViewPoints]}});
  QovUtil::AttributeMap attributes;
  for (std::uint32_t i = 0; i < 8; ++i) attributes["An attribute " + std::to_string(i)] = i;
  const std::string shared = SaveShared("shared.ryx", kCommon, kInstances, attributes);
  const std::string model = Plate("model.ryx");
  for (const std::vector<std::string>& inputs :
       {std::vector<std::string>{model, views}, {"--merge-as-instances", shared, shared}}) {
    std::vector<std::string> arguments = inputs;
    arguments.push_back(mOutput);
    EXPECT_EQ(Merge(arguments).mStatus, 0) << inputs[0];
    const Outcome again = Merge({mOutput, model, mDir / "again.ryx"});
    EXPECT_EQ(again.mStatus, 0) << again.mErr;
  }
}

/// Results must not be copied as a whole when one more is added, nor have attributes of their own.
TEST_F(HostileInput, GeneratedResultsTakeLittleMemory) {
  constexpr rlim_t kAddressSpace = rlim_t{135} << 20;
  mSurroundings.mEnvironment["RYXMERGE_THREADS"] = "1";
  if (!kIsSanitized) mSurroundings.mLimits[RLIMIT_AS] = kAddressSpace;
  for (const std::string& shared :
       {SaveShared("many.ryx", 6000, 50, {}),
        SaveShared("attributes.ryx", 60, 500, {{"note", std::string(2000, 'n')}})}) {
    EXPECT_EQ(Merge({"--merge-as-instances", shared, shared, mOutput}).mStatus, 0) << shared;
  }
}

TEST_F(HostileInput, NodeSetsDoNotShareTheirBytes) {
  constexpr std::uint32_t kNodes = 100;
  const std::string model = SaveModel("sets.ryx", [](Tree& tree) {
    for (std::uint32_t i = 0; i < kNodes; ++i) {
      AddNode<NodeSets>(tree, 1, "Sets").SetSets({{"set", Count(i == 0 ? 3000 : 0, 1)}});
    }
  });
  Streams streams = ReadStreams(model);
  constexpr std::size_t kRecord = 20;  // light data of a node, with the offset at 8
  std::string& light = streams[kLightData];
  const std::size_t first = light.size() - kNodes * kRecord;
  for (std::size_t i = 1; i < kNodes; ++i) {
    std::copy_n(light.begin() + static_cast<std::ptrdiff_t>(first), kRecord,
                light.begin() + static_cast<std::ptrdiff_t>(first + i * kRecord));
  }
  WriteStreams(model, streams);
  ExpectRefusal(model, "Too many node sets share their bytes");
}

/// Merges more files than can be open at a time.
TEST_F(HostileInput, ThousandsOfFilesAreMerged) {
  constexpr std::size_t kFiles = 3000;
  const std::string model = SaveModel("model.ryx", [](Tree& tree) {
    Geometry& geometry = AddNode<Geometry>(tree, 1, "Mesh");
    geometry.AppendVariable(MakeVariable("Stress|LC1", 12, NumericArray::Of(Ramp(3, 1.0F))));
  });
  mSurroundings.mLimits[RLIMIT_NOFILE] = 64;
  for (const char* mode : {"--merge-as-datasets", "--merge-as-instances"}) {
    std::vector<std::string> arguments(kFiles + 1, model);
    arguments.front() = mode;
    for (std::size_t i = 1; i <= kFiles; ++i) {
      const std::string link = mDir / std::to_string(i);
      if (!Exists(link)) std::filesystem::create_hard_link(model, link);
      arguments[i] = link;
    }
    arguments.push_back(mOutput);
    EXPECT_EQ(Merge(arguments).mStatus, 0) << mode;
    EXPECT_EQ(Run({"check", mOutput}).mStatus, 0) << mode;
  }
  Tree tree(false);
  LoadTree(tree, mOutput);
  EXPECT_EQ(AsGeometry(tree.GetNodes().GetReqNode(2))->GetVariables().size(), kFiles);
}

TEST_F(HostileInput, IdsDoNotOverflow) {
  const std::string model = SaveModel("high.ryx", [](Tree& tree) {
    NodeTree::Node entry;
    entry.mId = 0xFFFFFFF0;
    entry.mParent = NodeTree::kRootId;
    entry.mData = std::make_unique<Group>("High");
    tree.GetNodes().PutNode(std::move(entry));
  });
  const Outcome outcome = Merge({model, model, mOutput});
  EXPECT_EQ(outcome.mStatus, 2);
  EXPECT_THAT(outcome.mErr, HasSubstr("too high to be shifted"));
  EXPECT_FALSE(Exists(mOutput));
}

/// Returns true if the text could control a terminal or contain a forged line.
bool IsPlain(const std::string& text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return c == '\n' || (c >= ' ' && c <= '~'); }) &&
         text.find("\nFORGED") == text.npos;
}

TEST_F(HostileInput, NamesAreEscapedOnOutput) {
  // Colours, a newline, DEL, a two-byte control character, invalid UTF-8, right-to-left text.
  const std::string name = "a\033[2J\nFORGED\r\b\x7F\xC2\x9B\xFF\xE2\x80\xAE!";
  const std::string model = SaveModel("model.ryx", [&name](Tree& tree) {
    AddNode<Group>(tree, 1, name).mAttributes[name] = name;
    AddNode<Shape>(tree, 2, name);
    Geometry& geometry = AddNode<Geometry>(tree, 3, name);
    geometry.AppendVariable(MakeVariable(name, 12, NumericArray::Of(Ramp(3, 1.0F))));
    geometry.AppendVariable(MakeVariable(name + "|" + name, 12, {}));
    geometry.AppendVariable(MakeLinked(name, {4, 0}));
    AddNode<NodeSets>(tree, 1, name).SetSets({{name, {1, 2}}});
    AddNode<FutureNode>(tree, 1, name);
    AddViewPointPath(tree, name, 1);
    tree.GetViewPoint().mName = name;
  });
  const std::string other = Plate("other.ryx");
  Streams streams = ReadStreams(model);
  const std::string count("\3\0\0\0", 4);  // number of results of the geometry
  std::string& light = streams[kLightData];
  light.replace(light.find(count + std::string(1, static_cast<char>(name.size()))), 4, 4, '\xFF');
  streams[name] = "a stream";
  const std::string broken = mDir / "broken.ryx";
  WriteStreams(broken, streams);
  std::filesystem::copy(model, mDir / name);
  const std::vector<std::string> files = {model, broken, mDir / name};
  for (const std::string& file : files) {
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"ls", file},
          {"info", file},
          {"check", file},
          {"diff", file, other},
          {"diff", other, file},
          {"dump", file},
          {"dump", file, "--view"},
          {"plan", "--merge-as-instances", file, file, mOutput},
          {"plan", file, file, mOutput},
          {"verify", other, file, file},
          {"ls", "--json", file},
          {"check", "--json", file}}) {
      const Outcome outcome = Run(command);
      EXPECT_TRUE(IsPlain(outcome.mOut)) << command[0] << ": " << outcome.mOut;
      EXPECT_TRUE(IsPlain(outcome.mErr)) << command[0] << ": " << outcome.mErr;
    }
    for (const char* mode : {"--merge-as-datasets", "--merge-as-instances"}) {
      const Outcome outcome = Merge({mode, file, other, mDir / name + "/out"});
      EXPECT_EQ(outcome.mStatus, 2);
      EXPECT_THAT(outcome.mErr, HasSubstr("a\\x1B[2J"));
      EXPECT_EQ(outcome.mErr.find('\033'), outcome.mErr.npos) << outcome.mErr;
      EXPECT_EQ(ReadFile(mLog).find('\033'), std::string::npos);
      EXPECT_TRUE(file != broken || outcome.mErr.find("\nFORGED") == outcome.mErr.npos);
    }
  }
}

TEST_F(HostileInput, FailedMergesLeaveNoFiles) {
  const std::string model = Plate("model.ryx");
  const std::string views = Views("views.vpt");
  for (const std::string& place : {mDir / "none", model, std::string("/proc")}) {
    EXPECT_EQ(Merge({model, model, place + "/out.ryx"}).mStatus, 2) << place;
    EXPECT_EQ(Merge({model, views, place + "/out.ryx"}).mStatus, 2) << place;
    const Outcome outcome = Merge({model, model, views, place + "/out.ryx"});
    EXPECT_EQ(outcome.mStatus, 3) << place;
    EXPECT_THAT(outcome.mErr, HasSubstr("Unable to open file \"" + place));
    EXPECT_FALSE(Exists(place + "/out.ryx") || Exists(place + "/out.ryx.temp"));
  }
}

/// Links that another user placed into a shared folder.
TEST_F(HostileInput, PlantedLinksAreNotFollowed) {
  const std::string model = Plate("model.ryx");
  const std::string precious = mDir / "precious";
  const auto expectUntouched = [&](int status) {
    const Outcome outcome = Merge({model, model, Views("views.vpt"), mOutput});
    EXPECT_EQ(outcome.mStatus, status);
    EXPECT_EQ(ReadFile(precious), "ours");
    return outcome.mErr;
  };
  WriteFile(precious, "ours");
  std::filesystem::create_symlink(precious, mLog);
  EXPECT_THAT(expectUntouched(0), HasSubstr("Unable to set log file."));
  std::filesystem::remove(mLog);
  std::filesystem::create_hard_link(precious, mLog);
  std::filesystem::remove(mOutput + ".temp");
  EXPECT_THAT(expectUntouched(0), HasSubstr("Unable to set log file."));
  std::filesystem::remove(mLog);
  ASSERT_EQ(::mkfifo(mLog.c_str(), 0600), 0);
  std::filesystem::remove(mOutput + ".temp");
  EXPECT_THAT(expectUntouched(0), HasSubstr("Unable to set log file."));
  for (const std::string& target : {precious, mDir / "missing"}) {
    std::filesystem::remove(mOutput + ".temp");
    std::filesystem::create_symlink(target, mOutput + ".temp");
    expectUntouched(3);
    EXPECT_FALSE(Exists(mDir / "missing"));
  }
}

}  // namespace
}  // namespace Qov::Test
