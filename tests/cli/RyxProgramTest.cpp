#include "ryxFixture.h"
#include "support/Files.h"

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
  RunShell("ryx sample .");
  const bool hasZsh = RunShell("zsh --version").mStatus == 0;
  const bool hasFish = RunShell("fish --version").mStatus == 0;
  struct Case {
    std::string mTyped;  ///< Words of the shell; the last one is unfinished.
    std::vector<std::string> mWords;
    std::vector<std::string> mQuoted = mWords;  ///< As bash inserts them.
  };
  const std::vector<Case> cases = {
      {"in", {"info"}},
      {"--ver", {"--version"}},
      {"help pl", {"plan"}},
      {"ls --n", {"--no-results", "--node", "--name"}},
      {"ls --type Ge", {"Geometry"}},
      {"dump x.ryx -o \"\"", {}},
      {"info none", {}},
      {"nonsense --", {}},
      {"dump plate.ryx Sk", {"Skin"}},
      {"dump plate.ryx Skin Str",
       {"Stress", "Stress\\x1ELC1", "Stress\\x1ELC2"},
       {"Stress", "Stress\\\\x1ELC1", "Stress\\\\x1ELC2"}},
      {"dump plate.ryx --view-point \"\"", {}},
      {"dump plate.vpt --view-point H", {"Home of plate"}, {"Home\\ of\\ plate"}},
      {"ls plate.ryx --results No", {"Node Ids"}, {"Node\\ Ids"}},
      {"ls plate.ryx --results Node\\ I", {"Node Ids"}, {"Node\\ Ids"}},
      {"dump plate.ryx --stream Hea", {"Heavy Data"}, {"Heavy\\ Data"}},
      {"diff none plate.ryx --root-b Pl", {"Plate"}},
  };
  const auto lines = [](const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += word + "\n";
    return text;
  };
  for (const Case& line : cases) {
    SCOPED_TRACE(line.mTyped);
    const auto complete = [&](const std::string& shell, const std::string& script) {
      WriteFile(mDir / "script", script);
      return RunShell(shell + " ./script").mOut;
    };
    EXPECT_EQ(
        complete("bash", "source " RYX_COMPLETIONS "/ryx.bash; COMP_WORDS=(ryx " + line.mTyped +
                             "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _ryx; for word in "
                             "\"${COMPREPLY[@]}\"; do echo \"$word\"; done"),
        lines(line.mQuoted));
    if (hasZsh) {
      EXPECT_EQ(complete("zsh", "_files() {}; compadd() { print -lr -- $found }; words=(ryx " +
                                    line.mTyped +
                                    "); CURRENT=$#words; PREFIX=$words[-1]; complete() { source " +
                                    RYX_COMPLETIONS "/ryx.zsh }; complete"),
                lines(line.mWords));
    }
    if (hasFish && !line.mWords.empty()) {  // fish adds file names only where there are no words
      const Outcome outcome = RunShell("fish --no-config -c 'source " RYX_COMPLETIONS
                                       "/ryx.fish; complete -C\"ryx $argv[1]\"' -- '" +
                                       line.mTyped + "'");
      EXPECT_THAT(outcome.mOut, HasSubstr(line.mWords.front())) << outcome.mErr;
    }
  }
}

}  // namespace
}  // namespace Qov::Test
