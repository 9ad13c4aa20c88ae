#pragma once

#include <gmock/gmock.h>

#include <filesystem>

#include "RunProgram.h"
#include "support/ModelBuilder.h"
#include "support/ModelCompare.h"

namespace Qov::Test {

/// Runs RyxMerge in a folder of its own, where the log goes too.
class RyxMergeProgram : public testing::Test {
 protected:
  RyxMergeProgram() { mSurroundings.mEnvironment["PELORIN_TEMP_PATH"] = mDir.GetPath().string(); }

  Outcome Run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), RYXMERGE_PROGRAM);
    return RunProgram(arguments, mSurroundings);
  }

  /// Files in the folder, by name.
  std::string Plate(const std::string& name, std::uint32_t seed = 1) {
    SavePlate(mDir / name, {"Stress|LC1", "Stress|LC2"}, seed);
    return mDir / name;
  }
  std::string Views(const std::string& name) {
    SaveViewPointFile(mDir / name, name);
    return mDir / name;
  }

  static bool Exists(const std::string& path) {
    return std::filesystem::exists(std::filesystem::symlink_status(path));
  }
  /// How every error outside the merges is told: one line.
  static auto EndsWithOneLineOfTheProgram() {
    return testing::ContainsRegex("(^|\n)" RYXMERGE_PROGRAM ": [^\n]+\n$");
  }

  TempDir mDir;
  std::string mOutput = mDir / "out.ryx";
  std::string mLog = mDir / "RyxMerge_trace.log";
  std::string mLogMessage = "Writing log to \"" + mLog + "\"\n";
  Surroundings mSurroundings;
};

}  // namespace Qov::Test
