#include "ryxFixture.h"

namespace Qov::Test {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;

using RyxCommandLine = RyxProgram;

TEST_F(RyxCommandLine, RequestedHelpGoesToStandardOutput) {
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

TEST_F(RyxCommandLine, ErrorsGoToStandardError) {
  SavePlate(mDir / "plate.ryx", {"Stress|LC1"}, 1);
  ExpectTranscript("program.txt");
}

TEST_F(RyxCommandLine, TerminalsShowLinesColoursAndProgress) {
  if (RunShell("script -qec 'stty cols 60' /dev/null </dev/null").mStatus != 0) {
    GTEST_SKIP() << "script(1) cannot open a pseudo-terminal on this machine";
  }
  ExpectTranscript("terminal.txt");
}

TEST_F(RyxCommandLine, ShellsGetCompletionsFromTheProgram) {
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

}  // namespace
}  // namespace Qov::Test
