#include "SetLogFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>

#include "Qov/Log/Manager.h"
#include "Qov/Util/SingletonHolder.h"
#include "diagnostics/Printable.h"

namespace {

std::string LogDirectory() {
  const char* path = std::getenv("PELORIN_TEMP_PATH");
  const bool isSet = path != nullptr && *path != '\0';
  return std::string(isSet ? path : "/tmp") + "/";
}

/// Writes printable text to an open file. Closes the file when it is destroyed.
class LogFile : public Qov::Log::Publisher {
 public:
  explicit LogFile(int descriptor) : mDescriptor(descriptor) {}
  ~LogFile() override { ::close(mDescriptor); }
  LogFile(const LogFile&) = delete;
  LogFile& operator=(const LogFile&) = delete;

  Qov::Log::Publisher& operator<<(const char* text) override {
    const std::string printable = Qov::Util::MakePrintable(text);
    for (std::string_view rest = printable; !rest.empty();) {
      const ssize_t written = ::write(mDescriptor, rest.data(), rest.size());
      if (written <= 0) break;  // a full disk must not stop a merge
      rest.remove_prefix(static_cast<std::size_t>(written));
    }
    return *this;
  }
  void flush() override {}

 private:
  int mDescriptor;
};

bool LeadsTo(const std::string& path, const struct stat& file) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && status.st_dev == file.st_dev &&
         status.st_ino == file.st_ino;
}

/// Returns true for an ordinary file with exactly one name. In a folder that every user can write
/// to, another user may have put a link or a pipe there.
bool IsSafe(int descriptor, const std::vector<std::string>& models) {
  struct stat status {};
  return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == 1 &&
         status.st_uid == ::geteuid() &&
         std::none_of(models.begin(), models.end(),
                      [&](const std::string& path) { return LeadsTo(path, status); });
}

/// Opens the log file. Returns -1 if it cannot be opened or must not be written to; the file is
/// unchanged then. Does not follow a link in the last part of the path. Creates the file before it
/// is compared with the models, because the path of an output that does not exist yet may lead to
/// it.
int OpenLogFile(const std::string& path, const std::vector<std::string>& models) {
  constexpr mode_t kForAll = 0666;  // the umask removes bits
  constexpr int kFlags = O_WRONLY | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  int descriptor = ::open(path.c_str(), kFlags | O_CREAT | O_EXCL, kForAll);
  const bool isNew = descriptor != -1;
  if (!isNew) descriptor = ::open(path.c_str(), kFlags);
  if (descriptor == -1) return -1;
  if (IsSafe(descriptor, models) && ::ftruncate(descriptor, 0) == 0) return descriptor;
  ::close(descriptor);
  if (isNew) ::unlink(path.c_str());
  return -1;
}

}  // namespace

void SetLogFile(const std::vector<std::string>& models) {
  const std::string directory = LogDirectory();
  const std::string path = directory + "RyxMerge_trace.log";
  const int descriptor = ::access(directory.c_str(), W_OK) == 0 ? OpenLogFile(path, models) : -1;
  if (descriptor == -1) {
    std::cerr << "Unable to set log file."
              << "Log information will be discorded." << std::endl;
    Qov::Log::LogTraceToNull();
    return;
  }
  std::cerr << "Writing log to " << Qov::Util::Quote(path) << std::endl;
  Qov::Util::SingletonHolder<Qov::Log::Manager>::Instance().TraceTo(
      "log file", std::make_unique<LogFile>(descriptor));
}
