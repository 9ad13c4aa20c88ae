// Runs a command and prints its resource usage in one line:
//
//   measure COMMAND...
//   wall=12.345 cpu=23.456 rss=123456 files=12
//
// wall and cpu are in seconds, cpu of all threads together; rss is the peak memory in KiB; files is
// the highest sampled number of open files. The output of the command goes to standard error. The
// exit status is that of the command.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

std::ptrdiff_t CountFiles(pid_t process) {
  std::error_code error;
  const std::filesystem::directory_iterator files("/proc/" + std::to_string(process) + "/fd",
                                                  error);
  return error ? 0 : std::distance(begin(files), end(files));
}

/// Counts the open files of a process every 5 ms.
class FileSampler {
 public:
  explicit FileSampler(pid_t process) : mThread([this, process] { Sample(process); }) {}
  std::ptrdiff_t Stop() {
    mStopped = true;
    mThread.join();
    return mMost;
  }

 private:
  void Sample(pid_t process) {
    while (!mStopped) {
      mMost = std::max(mMost, CountFiles(process));
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }

  std::atomic<bool> mStopped = false;
  std::ptrdiff_t mMost = 0;
  std::thread mThread;
};

pid_t Start(char** command) {
  const pid_t child = fork();
  if (child != 0) return child;
  dup2(STDERR_FILENO, STDOUT_FILENO);
  execvp(command[0], command);
  std::perror(command[0]);
  _exit(127);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  const auto start = Clock::now();
  const pid_t child = Start(argv + 1);
  FileSampler sampler(child);
  // WNOWAIT keeps the process id in use while the sampler runs.
  siginfo_t ended{};
  waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT);
  const std::chrono::duration<double> wall = Clock::now() - start;
  const std::ptrdiff_t files = sampler.Stop();
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  std::printf("wall=%.3f cpu=%.3f rss=%ld files=%td\n", wall.count(),
              Seconds(usage.ru_utime) + Seconds(usage.ru_stime), usage.ru_maxrss, files);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
