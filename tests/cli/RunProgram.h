#pragma once

#include <sys/resource.h>

#include <map>
#include <string>
#include <vector>

namespace Qov::Test {

/// What a program left: its status (128 and the signal's number if it was killed) and streams.
struct Outcome {
  int mStatus = -1;
  std::string mOut;
  std::string mErr;
};

/// What a program runs under.
struct Surroundings {
  std::map<std::string, std::string> mEnvironment;
  std::map<int, rlim_t> mLimits = {};  ///< By resource; the others stay as they are.
};

/// Runs a program to its end, or for so many microseconds until it gets a signal. The first word of
/// the command is its path.
Outcome RunProgram(std::vector<std::string> command, const Surroundings& surroundings,
                   int signal = 0, unsigned microseconds = 0);

}  // namespace Qov::Test
