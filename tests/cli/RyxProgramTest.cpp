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

/// The next files are read while one is shown.
TEST_F(RyxCommandLine, ShowsManyFilesLikeSingleOnes) {
  ASSERT_EQ(Run({"sample", mDir / "", "--size", "4", "--steps", "9"}).mStatus, 0);
  std::vector<std::string> paths;
  for (int i = 1; i <= 9; ++i) paths.push_back(mDir / ("run" + std::to_string(i) + ".ryx"));
  std::string flipped = ReadFile(paths[2]);
  for (std::size_t at = flipped.size() / 4; at < flipped.size(); at += 500) flipped[at] ^= 8;
  WriteFile(paths[2], flipped);
  WriteFile(paths[4], ReadFile(paths[4]).substr(0, 3000));
  std::filesystem::remove(paths[5]);
  for (const char* threads : {"1", "2", "8"}) {
    mSurroundings.mEnvironment["RYXMERGE_THREADS"] = threads;
    for (const std::string command : {"check", "ls"}) {
      std::string output;
      std::string errors;
      std::vector<std::string> arguments{command};
      for (const std::string& path : paths) {
        const Outcome one = Run({command, path});
        if (command == "ls" && !output.empty() && !one.mOut.empty()) output += "\n";
        output += one.mOut;
        errors += one.mErr;
        arguments.push_back(path);
      }
      const Outcome all = Run(arguments);
      EXPECT_EQ(all.mOut, output) << command << threads;
      EXPECT_EQ(all.mErr, errors) << command << threads;
      EXPECT_EQ(all.mStatus, 2) << command << threads;
    }
  }
}

}  // namespace
}  // namespace Qov::Test
