#include "Confined.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <stdexcept>

namespace Qov::Test {
namespace {

/// What the process tells the one that started it.
struct Shared {
  std::size_t mCase;
  char mText[4096];
};

Shared* MakeShared() {
  void* memory =
      ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::runtime_error("mmap failed");
  return static_cast<Shared*>(memory);
}

void Limit(int resource, rlim_t most) {
  const rlimit limit{most, most};
  ::setrlimit(static_cast<__rlimit_resource>(resource), &limit);
}

void Confine() {
#ifndef __SANITIZE_ADDRESS__  // which takes terabytes of address space
  Limit(RLIMIT_AS, rlim_t{1} << 30);
#endif
  Limit(RLIMIT_CPU, 280);
}

std::string RunCase(const Case& run, std::size_t i) {
  try {
    return run(i);
  } catch (const std::exception& error) {
    return std::string("threw ") + error.what();
  }
}

[[noreturn]] void RunAll(std::size_t n, const Case& run, Shared& shared) {
  Confine();
  for (shared.mCase = 0; shared.mCase < n; ++shared.mCase) {
    const std::string text = RunCase(run, shared.mCase);
    if (text.empty()) continue;
    const std::size_t size = std::min(text.size(), sizeof(shared.mText) - 1);
    std::memcpy(shared.mText, text.data(), size);
    ::_exit(1);
  }
  ::_exit(0);
}

}  // namespace

std::string RunConfined(std::size_t n, const Case& run) {
  Shared* shared = MakeShared();
  const pid_t child = ::fork();
  if (child < 0) throw std::runtime_error("fork failed");
  if (child == 0) RunAll(n, run, *shared);
  int status = 0;
  ::waitpid(child, &status, 0);
  std::string text;
  if (status != 0) {
    text = "case " + std::to_string(shared->mCase) + ": ";
    text += WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status))
                                : std::string(shared->mText);
  }
  ::munmap(shared, sizeof(Shared));
  return text;
}

}  // namespace Qov::Test
