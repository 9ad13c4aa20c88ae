#include "SignalRemovals.h"

#include <unistd.h>

#include <array>
#include <atomic>

namespace QovJbf {

/// Entries are added at the front and are never freed, because the handler may run at any time and
/// on any thread.
struct SignalRemoval {
  const std::string mPath;
  SignalRemoval* mpNext;
  std::atomic<bool> mIsWanted = true;
};

namespace {

constexpr std::array<int, 5> kSignals = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGXCPU};

std::atomic<SignalRemoval*> gRemovals{nullptr};

/// Files come before the folders that hold them, because they are remembered later.
extern "C" void RemoveAndEnd(int signal) {
  for (SignalRemoval* removal = gRemovals; removal != nullptr; removal = removal->mpNext) {
    if (!removal->mIsWanted) continue;
    const char* path = removal->mPath.c_str();
    if (::unlink(path) != 0) ::rmdir(path);
  }
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

}  // namespace

void RemoveOutputsOnSignals() {
  for (const int signal : kSignals) {
    if (std::signal(signal, RemoveAndEnd) == SIG_IGN) std::signal(signal, SIG_IGN);
  }
  std::signal(SIGXFSZ, SIG_IGN);
}

SignalRemoval* RememberRemoval(const std::string& path) {
  auto* removal = new SignalRemoval{path, gRemovals};
  while (!gRemovals.compare_exchange_weak(removal->mpNext, removal)) {
  }
  return removal;
}

void ForgetRemoval(SignalRemoval* removal) { removal->mIsWanted = false; }

SignalBlock::SignalBlock() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : kSignals) sigaddset(&signals, signal);
  ::pthread_sigmask(SIG_BLOCK, &signals, &mBefore);
}

SignalBlock::~SignalBlock() { ::pthread_sigmask(SIG_SETMASK, &mBefore, nullptr); }

}  // namespace QovJbf
