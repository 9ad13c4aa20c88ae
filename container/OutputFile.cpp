#include "OutputFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <map>
#include <utility>

#include "Qov/Jbf/OutputLocks.h"
#include "Qov/Log/Record.h"
#include "Qov/Util/Assert.h"
#include "Qov/Util/Printable.h"
#include "Qov/Util/Raise.h"
#include "SourceFile.h"
#include "Sources.h"

namespace QovJbf {

using Qov::Util::Quote;
using Qov::Util::Raise;
using ErrorType = Qov::Util::Exception::ErrorType;

namespace {

/// A file descriptor that is closed with its owner.
class Descriptor {
 public:
  explicit Descriptor(int descriptor) : mDescriptor(descriptor) {}
  Descriptor(Descriptor&& other) noexcept : mDescriptor(other.Release()) {}
  ~Descriptor() {
    if (IsOpen()) ::close(mDescriptor);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  Descriptor& operator=(Descriptor&&) = delete;

  bool IsOpen() const { return mDescriptor != -1; }
  int Get() const { return mDescriptor; }
  int Release() { return std::exchange(mDescriptor, -1); }
  /// Another one for the same open file, with the same lock.
  Descriptor Duplicate() const { return Descriptor(::fcntl(mDescriptor, F_DUPFD_CLOEXEC, 0)); }

 private:
  int mDescriptor;
};

/// Closed outputs whose locks are kept, by their paths.
using KeptLocks = std::map<std::string, Descriptor>;
KeptLocks* gpKeptLocks = nullptr;

/// True if both lead to the same regular file.
bool IsSameRegularFile(const struct stat& left, const struct stat& right) {
  return S_ISREG(left.st_mode) && left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

bool IsRegular(int descriptor) {
  struct stat status {};
  return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

[[noreturn]] void RaiseReplaced(const std::string& path) {
  Raise(kJbFileSource, ErrorType::WriteError,
        "Output file " + Quote(path) + " was removed or replaced while it was written");
}

/// The file at `path` again, whose lock was kept.
Descriptor Reopen(const std::string& path, const Descriptor& kept) {
  struct stat before {};
  struct stat now {};
  if (::fstat(kept.Get(), &before) != 0 || ::stat(path.c_str(), &now) != 0 ||
      !IsSameRegularFile(now, before)) {
    RaiseReplaced(path);
  }
  ::lseek(kept.Get(), 0, SEEK_SET);
  return kept.Duplicate();
}

void Lock(const Descriptor& output, const std::string& path) {
  if (::flock(output.Get(), LOCK_EX | LOCK_NB) == 0) return;
  if (errno == EWOULDBLOCK) {
    Raise(kJbFileSource, ErrorType::MiscellaneousError,
          "Output file " + Quote(path) +
              " is being written by another run; wait until that has ended, or name another "
              "output");
  }
  Qov::Log::Trace(kJbFileSource)
      << "The output cannot be locked; another writer would go unnoticed.";
}

Descriptor OpenAndLock(const std::string& path, int flags) {
  constexpr mode_t kForAll = 0666;  // as far as the umask lets them
  Descriptor output(RetryWithFewerHandles([&] { return ::open(path.c_str(), flags, kForAll); },
                                          [](int result) { return result != -1; }));
  if (output.IsOpen() && IsRegular(output.Get())) Lock(output, path);
  return output;
}

}  // namespace

void CheckOutputIsFree(const std::string& path) {
  OpenAndLock(path, O_RDWR | O_CLOEXEC | O_NONBLOCK);  // the lock ends with the descriptor
}

std::FILE* OpenOutput(const std::string& path, const char* mode) {
  const bool isNew = *mode == 'w';
  const bool isKept = gpKeptLocks != nullptr && gpKeptLocks->contains(path);
  Descriptor output = isKept ? Reopen(path, gpKeptLocks->at(path))
                             : OpenAndLock(path, O_RDWR | O_CLOEXEC | (isNew ? O_CREAT : 0));
  if (!output.IsOpen()) return nullptr;
  if (isNew && IsRegular(output.Get()) && ::ftruncate(output.Get(), 0) != 0) return nullptr;
  std::FILE* file = ::fdopen(output.Get(), mode);
  if (file != nullptr) output.Release();
  return file;
}

void CheckStillAt(const std::string& path, std::FILE* file) {
  struct stat written {};
  if (::fstat(::fileno(file), &written) != 0 || !S_ISREG(written.st_mode)) return;
  struct stat now {};
  if (::stat(path.c_str(), &now) != 0 || !IsSameRegularFile(now, written)) RaiseReplaced(path);
}

void KeepOutputLock(const std::string& path, std::FILE* file) {
  if (gpKeptLocks == nullptr || !IsRegular(::fileno(file))) return;
  Descriptor kept(::fcntl(::fileno(file), F_DUPFD_CLOEXEC, 0));
  if (kept.IsOpen()) gpKeptLocks->try_emplace(path, std::move(kept));
}

OutputLocks::OutputLocks() {
  QOV_ASSERT(gpKeptLocks == nullptr);
  gpKeptLocks = new KeptLocks;
}

OutputLocks::~OutputLocks() { delete std::exchange(gpKeptLocks, nullptr); }

}  // namespace QovJbf
