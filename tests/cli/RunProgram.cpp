#include "RunProgram.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "support/Files.h"
#include "support/TempDir.h"

namespace Qov::Test {
namespace {

/// Runs the program in the child process.
[[noreturn]] void BecomeProgram(std::vector<std::string>& command, const Surroundings& surroundings,
                                const TempDir& streams) {
  const auto redirect = [&streams](int target, const char* name) {
    ::dup2(::open((streams / name).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), target);
  };
  redirect(STDOUT_FILENO, "out");
  redirect(STDERR_FILENO, "err");
  for (const auto& [name, value] : surroundings.mEnvironment) {
    ::setenv(name.c_str(), value.c_str(), 1);
  }
  for (const auto& [resource, most] : surroundings.mLimits) {
    const rlimit limit{most, most};
    ::setrlimit(static_cast<__rlimit_resource>(resource), &limit);
  }
  std::vector<char*> pointers;
  for (std::string& word : command) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  ::execv(pointers[0], pointers.data());
  ::_exit(127);
}

}  // namespace

Outcome RunProgram(std::vector<std::string> command, const Surroundings& surroundings, int signal,
                   unsigned microseconds) {
  const TempDir streams;
  const pid_t child = ::fork();
  if (child == 0) BecomeProgram(command, surroundings, streams);
  if (signal != 0) {
    ::usleep(microseconds);
    ::kill(child, signal);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return {code, ReadFile(streams / "out"), ReadFile(streams / "err")};
}

}  // namespace Qov::Test
