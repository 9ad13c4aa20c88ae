#pragma once

#include <gmock/gmock.h>

#include <cstdlib>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "JsonShape.h"
#include "RunProgram.h"
#include "support/ModelBuilder.h"

namespace Qov::Test {

/// Runs ryx, and shell commands, on files in a folder of its own.
class RyxProgram : public testing::Test {
 protected:
  Outcome Run(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), RYX_PROGRAM);
    return RunProgram(arguments, mSurroundings);
  }

  /// Of a model that begins with a plate: any node, the mesh, a result of it.
  template <class T>
  static T& Content(QovRyx::Tree& tree, std::uint32_t id) {
    return dynamic_cast<T&>(*tree.GetNodes().GetReqNode(id).mData);
  }
  static QovRyx::Geometry& Mesh(QovRyx::Tree& tree) {
    return Content<QovRyx::Geometry>(tree, PlateIds::kGeometry);
  }
  static QovRyx::Geometry::VarStruct& Result(QovRyx::Tree& tree, std::size_t i) {
    return Mesh(tree).EditVariable(i);
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
    static const std::regex kDate(
        "[A-Z][a-z]{2} [A-Z][a-z]{2} [0-9]{2} [0-9:]{8} [0-9]{4} [^,\n]+|Time : [^\n]+");
    static const std::regex kLine("Line : [0-9]+");
    return std::regex_replace(std::regex_replace(text, kDate, "DATE"), kLine, "Line : N");
  }

  /// With the environment variable RYX_UPDATE_GOLDEN set, the file is written instead.
  void ExpectGolden(const std::string& name, const std::string& text) const {
    const std::string path = std::string(RYX_GOLDEN_DIR "/") + name;
    if (std::getenv("RYX_UPDATE_GOLDEN") != nullptr) WriteFile(path, Normalized(text));
    EXPECT_EQ(Normalized(text), ReadFile(path)) << path;
  }

  /// Expects a golden file to hold, below each of its lines "$ ...", what `run` makes of the rest
  /// of the line. Lines "# ..." are comments.
  template <class Run>
  void ExpectAfterEachLine(const std::string& name, Run run) const {
    std::string text;
    std::istringstream golden(ReadFile(std::string(RYX_GOLDEN_DIR "/") + name));
    for (std::string line; std::getline(golden, line);) {
      if (line.starts_with("# ")) text += line + "\n";
      if (line.starts_with("$ ")) text += line + "\n" + run(line.substr(2));
    }
    EXPECT_NE(text, "");
    ExpectGolden(name, text);
  }

  /// The same for commands of the shell: both streams, with "! " before errors, and the status if
  /// it is not 0. Documents are checked, too. "poke FILE PLACE BYTES" damages a file.
  void ExpectTranscript(const std::string& name) const {
    ExpectAfterEachLine(name, [this](const std::string& command) {
      const Outcome outcome = RunShell(command);
      if (outcome.mOut.starts_with("{\n")) {
        ParseJson(outcome, command.substr(4, command.find(' ', 4) - 4));
      }
      std::string text = outcome.mOut;
      std::istringstream errors(outcome.mErr);
      for (std::string line; std::getline(errors, line);) text += "! " + line + "\n";
      if (outcome.mStatus != 0) text += "[" + std::to_string(outcome.mStatus) + "]\n";
      return text;
    });
  }

  Outcome RunShell(const std::string& command) const {
    static const std::string kSetUp =
        "PATH=" RYX_FOLDER
        ":$PATH; export PELORIN_TEMP_PATH=. LC_ALL=C; "
        "poke() { printf \"$3\" | dd of=\"$1\" seek=\"$2\" bs=1 conv=notrunc status=none; }; ";
    return RunProgram({"/bin/sh", "-c", "cd " + mDir.GetPath().string() + "; " + kSetUp + command},
                      {});
  }

  Surroundings mSurroundings;
  TempDir mDir;
};

}  // namespace Qov::Test
