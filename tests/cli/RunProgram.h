#pragma once

#include <sys/resource.h>

#include <map>
#include <string>
#include <vector>

namespace Qov::Test {

/// Status of a program (128 plus the signal's number if it was killed), and its output streams.
struct Outcome {
  int mStatus = -1;
  std::string mOut;
  std::string mErr;
};

/// Limits for a program.
struct Surroundings {
  std::map<std::string, std::string> mEnvironment;
  std::map<int, rlim_t> mLimits = {};  ///< By resource; the others stay as they are.
};

/// Runs a program to its end, or sends a signal after the given number of microseconds. The first
/// word of the command is its path.
Outcome RunProgram(std::vector<std::string> command, const Surroundings& surroundings,
                   int signal = 0, unsigned microseconds = 0);

}  // namespace Qov::Test
