#include "ryxFixture.h"

namespace Qov::Test {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::StartsWith;

class RyxCommandLine : public RyxProgram {
 protected:
  /// What the shell says.
  static Outcome RunShell(const std::string& script) {
    return RunProgram({"/bin/sh", "-c", script}, {});
  }
};

TEST_F(RyxCommandLine, HelpGoesToStandardOutputWhenAskedFor) {
  const Outcome general = Run({"--help"});
  EXPECT_EQ(general.mStatus, 0);
  EXPECT_THAT(general.mOut, HasSubstr("Usage: ryx [OPTIONS]"));
  EXPECT_EQ(Run({"--version"}).mOut, "ryx 1.0.0\n");
  std::istringstream words(Run({"__complete", ""}).mOut);
  for (std::string name; std::getline(words, name);) {
    if (name.starts_with('-')) continue;
    EXPECT_THAT(general.mOut, HasSubstr("\n  " + name + " "));
    const Outcome help = Run({name, "--help"});
    EXPECT_EQ(help.mStatus, 0);
    EXPECT_THAT(help.mOut, HasSubstr("Usage: ryx " + name));
    EXPECT_THAT(help.mOut, ContainsRegex("\nExamples?: ryx " + name + " "));
  }
}

TEST_F(RyxCommandLine, MisuseIsExplainedOnStandardError) {
  struct Case {
    std::vector<std::string> mArguments;
    std::string mError;
  };
  const std::string general = "Try \"ryx --help\".\n";
  const std::vector<Case> cases = {
      {{"smaple"}, "ryx: unknown subcommand \"smaple\", did you mean \"sample\"?\n" + general},
      {{"quux"}, "ryx: unknown subcommand \"quux\"\n" + general},
      {{"\033[2J"}, "ryx: unknown subcommand \"\\x1B[2J\"\n" + general},
      {{"--verison"}, "ryx: unknown option \"--verison\", did you mean \"--version\"?\n" + general},
      {{"ls"}, "ryx: FILE is required\nTry \"ryx ls --help\".\n"},
      {{"ls", "--hlep", "x"},
       "ryx: unknown option \"--hlep\", did you mean \"--help\"?\nTry \"ryx ls --help\".\n"},
      {{"sample", "a", "b"}, "ryx: unknown argument \"b\"\nTry \"ryx sample --help\".\n"},
  };
  for (const Case& misuse : cases) {
    const Outcome outcome = Run(misuse.mArguments);
    EXPECT_EQ(outcome.mStatus, 2) << misuse.mError;
    EXPECT_EQ(outcome.mOut, "");
    EXPECT_EQ(outcome.mErr, misuse.mError);
  }
  const Outcome bare = Run({});
  EXPECT_EQ(bare.mStatus, 2);
  EXPECT_EQ(bare.mOut, "");
  EXPECT_THAT(bare.mErr, HasSubstr("Subcommands:"));
}

TEST_F(RyxCommandLine, ShellsLearnTheWordsFromTheProgram) {
  struct Case {
    std::string mTyped;
    std::vector<std::string> mWords;
  };
  const std::vector<Case> cases = {
      {"ryx in", {"info"}},
      {"ryx --ver", {"--version"}},
      {"ryx ls --n", {"--no-results", "--node", "--name"}},
      {"ryx ls --type Ge", {"Geometry"}},
      {"ryx dump x.ryx --format = n", {"npy"}},
      {"ryx dump x.ryx -o \"\"", {}},
      {"ryx info pla", {}},
      {"ryx nonsense --", {}},
  };
  for (const Case& line : cases) {
    const Outcome outcome = RunProgram(
        {"/bin/bash", "-c",
         "source " RYX_COMPLETION "; PATH=$(dirname " RYX_PROGRAM "):$PATH; COMP_WORDS=(" +
             line.mTyped +
             "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _ryx; printf '%s\\n' \"${COMPREPLY[@]}\""},
        {});
    std::string expected;
    for (const std::string& word : line.mWords) expected += word + "\n";
    EXPECT_EQ(outcome.mOut, expected.empty() ? "\n" : expected) << line.mTyped;
    EXPECT_EQ(outcome.mErr, "");
  }
}

TEST_F(RyxCommandLine, ClosedPipeEndsQuietlyAndAFullDiskDoesNot) {
  SavePlate(mDir / "plate.ryx", {"Stress|LC1"}, 1);
  const std::string listing = RYX_PROGRAM " ls " + (mDir / "plate.ryx");
  const Outcome closed = RunShell("{ sleep 0.3; " + listing + "; echo status $? >&2; } | true");
  EXPECT_EQ(closed.mErr, "status 0\n");
  const Outcome full = RunShell(listing + " >/dev/full");
  EXPECT_EQ(full.mStatus, 2);
  EXPECT_THAT(full.mErr, StartsWith("ryx: Unable to write the output: "));
}

TEST_F(RyxCommandLine, FilesDoNotTakeThePlaceOfClosedStreams) {
  const Outcome outcome = RunShell(RYX_PROGRAM " sample " + (mDir / "") + " >&- 2>&-");
  EXPECT_EQ(outcome.mStatus, 2);
  EXPECT_THAT(ReadFile(mDir / "plate.ryx"), StartsWith("\x89JBF"));
  EXPECT_EQ(Run({"ls", mDir / "plate.ryx"}).mStatus, 0);
}

}  // namespace
}  // namespace Qov::Test
