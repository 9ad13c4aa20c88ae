#include "SetLogFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>

#include "Printable.h"
#include "Qov/Log/Manager.h"
#include "Qov/Util/SingletonHolder.h"

namespace {

std::string LogDirectory() {
  const char* path = std::getenv("PELORIN_TEMP_PATH");
  const bool isSet = path != nullptr && *path != '\0';
  return std::string(isSet ? path : "/tmp") + "/";
}

/// Writes to an open file, whose handle it takes over, what is fit for a terminal too.
class LogFile : public Qov::Log::Publisher {
 public:
  explicit LogFile(int descriptor) : mDescriptor(descriptor) {}
  ~LogFile() override { ::close(mDescriptor); }
  LogFile(const LogFile&) = delete;
  LogFile& operator=(const LogFile&) = delete;

  Qov::Log::Publisher& operator<<(const char* text) override {
    const std::string printable = Qov::MakePrintable(text);
    for (std::string_view rest = printable; !rest.empty();) {
      const ssize_t written = ::write(mDescriptor, rest.data(), rest.size());
      if (written <= 0) break;  // a full disk is no reason to stop a merge
      rest.remove_prefix(static_cast<std::size_t>(written));
    }
    return *this;
  }
  void flush() override {}

 private:
  int mDescriptor;
};

/// An ordinary file that only its name here leads to: in a folder that all may write to, somebody
/// else may have put a link or a pipe in its place.
bool IsSafe(int descriptor) {
  struct stat status {};
  return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == 1 &&
         ::ftruncate(descriptor, 0) == 0;
}

/// -1 if the file cannot be opened or is not to be written to. The last part of the path is not
/// followed if it is a link.
int OpenLogFile(const std::string& path) {
  constexpr mode_t kForAll = 0666;  // as far as the umask lets them
  const int flags = O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  const int descriptor = ::open(path.c_str(), flags, kForAll);
  if (descriptor == -1 || IsSafe(descriptor)) return descriptor;
  ::close(descriptor);
  return -1;
}

}  // namespace

void SetLogFile() {
  const std::string directory = LogDirectory();
  const std::string path = directory + "RyxMerge_trace.log";
  const int descriptor = ::access(directory.c_str(), W_OK) == 0 ? OpenLogFile(path) : -1;
  if (descriptor == -1) {
    std::cerr << "Unable to set log file."
              << "Log information will be discorded." << std::endl;
    Qov::Log::LogTraceToNull();
    return;
  }
  std::cerr << "Writing log to \"" << path << "\"" << std::endl;
  Qov::Util::SingletonHolder<Qov::Log::Manager>::Instance().TraceTo(
      "log file", std::make_unique<LogFile>(descriptor));
}
