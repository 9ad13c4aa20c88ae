#pragma once

#include <gmock/gmock.h>
#include <regex.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "JsonShape.h"
#include "RunProgram.h"
#include "support/ModelBuilder.h"

namespace Qov::Test {

/// Runs ryx on files in a folder of its own.
class RyxProgram : public testing::Test {
 protected:
  Outcome Run(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), RYX_PROGRAM);
    return RunProgram(arguments, {});
  }

  /// Saves what `build` makes of an empty model.
  template <class Build>
  std::string SaveModel(const std::string& name, Build build) const {
    QovRyx::Tree tree("Tester", "1.0", false);
    build(tree);
    SaveTree(tree, mDir / name);
    return mDir / name;
  }

  /// The document on standard output, checked against the page that describes it.
  static Tools::Json ParseJson(const Outcome& outcome, const std::string& command) {
    const Tools::Json document = Tools::Json::parse(outcome.mOut, nullptr, false);
    EXPECT_EQ(JsonShape(command).Check(document), "") << outcome.mOut << outcome.mErr;
    return document;
  }

  /// The text without what differs from run to run.
  std::string Normalized(std::string text) const {
    const std::string folder = mDir / "";
    for (std::size_t at = 0; (at = text.find(folder, at)) != text.npos;) {
      text.erase(at, folder.size());
    }
    regex_t date;
    regcomp(&date, "[A-Z][a-z]{2} [A-Z][a-z]{2} [0-9]{2} [0-9:]{8} [0-9]{4} [^,\n]+", REG_EXTENDED);
    for (regmatch_t match; regexec(&date, text.c_str(), 1, &match, 0) == 0;) {
      text.replace(static_cast<std::size_t>(match.rm_so),
                   static_cast<std::size_t>(match.rm_eo - match.rm_so), "DATE");
    }
    regfree(&date);
    return text;
  }

  /// With the environment variable RYX_UPDATE_GOLDEN set, the file is written instead.
  void ExpectGolden(const std::string& name, const std::string& text) const {
    const std::string path = std::string(RYX_GOLDEN_DIR "/") + name;
    if (std::getenv("RYX_UPDATE_GOLDEN") != nullptr) WriteFile(path, Normalized(text));
    EXPECT_EQ(Normalized(text), ReadFile(path)) << path;
  }

  TempDir mDir;
};

}  // namespace Qov::Test
