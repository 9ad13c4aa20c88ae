#include "ryxFixture.h"

#include <cstdlib>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>

#include "JsonShape.h"
#include "support/Files.h"

namespace Qov::Test {

Outcome RyxProgram::Run(std::vector<std::string> arguments) const {
  arguments.insert(arguments.begin(), RYX_PROGRAM);
  return RunProgram(arguments, mSurroundings);
}

std::string RyxProgram::SaveModel(const std::string& name,
                                  const std::function<void(QovRyx::Tree&)>& build) const {
  QovRyx::Tree tree("Tester", "1.0", false);
  build(tree);
  SaveTree(tree, mDir / name);
  return mDir / name;
}

Tools::Json RyxProgram::ParseJson(const Outcome& outcome, const std::string& command) {
  const Tools::Json document = Tools::Json::parse(outcome.mOut, nullptr, false);
  EXPECT_EQ(JsonShape(command).Check(document), "") << outcome.mOut << outcome.mErr;
  return document;
}

std::string RyxProgram::Normalized(std::string text) const {
  const std::string folder = mDir / "";
  for (std::size_t at = 0; (at = text.find(folder, at)) != text.npos;) {
    text.erase(at, folder.size());
  }
  static const std::regex kDate(
      "[A-Z][a-z]{2} [A-Z][a-z]{2} [0-9]{2} [0-9:]{8} [0-9]{4} [^,\n]+|Time : [^\n]+");
  static const std::regex kLine("Line : [0-9]+");
  // They depend on the library that compresses. An input can be the output of another merge.
  static const std::regex kSize(
      "[0-9.]+ ([KM]iB|bytes) from [0-9.]+ ([KM]iB|bytes) of inputs|\"outputBytes\": [0-9]+");
  text = std::regex_replace(std::regex_replace(text, kDate, "DATE"), kLine, "Line : N");
  return std::regex_replace(text, kSize, "SIZE");
}

void RyxProgram::ExpectGolden(const std::string& name, const std::string& text) const {
  const std::string path = std::string(RYX_GOLDEN_DIR "/") + name;
  if (std::getenv("RYX_UPDATE_GOLDEN") != nullptr) WriteFile(path, Normalized(text));
  EXPECT_EQ(Normalized(text), ReadFile(path)) << path;
}

void RyxProgram::ExpectAfterEachLine(const std::string& name, const LineRun& run) const {
  std::string text;
  std::istringstream golden(ReadFile(std::string(RYX_GOLDEN_DIR "/") + name));
  for (std::string line; std::getline(golden, line);) {
    if (line.starts_with("# ")) text += line + "\n";
    if (line.starts_with("$ ")) text += line + "\n" + run(line.substr(2));
  }
  EXPECT_NE(text, "");
  ExpectGolden(name, text);
}

void RyxProgram::ExpectTranscript(const std::string& name) const {
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

Outcome RyxProgram::RunShell(const std::string& command) const {
  static const std::string kSetUp =
      "PATH=" RYX_FOLDER
      ":$PATH; export PELORIN_TEMP_PATH=. LC_ALL=C; "
      "poke() { printf \"$3\" | dd of=\"$1\" seek=\"$2\" bs=1 conv=notrunc status=none; }; ";
  return RunProgram({"/bin/sh", "-c", "cd " + mDir.GetPath().string() + "; " + kSetUp + command},
                    {});
}

}  // namespace Qov::Test
