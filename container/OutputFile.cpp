#include "OutputFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <map>
#include <utility>

#include "Qov/Log/Record.h"
#include "Qov/Util/Assert.h"
#include "Qov/Util/Raise.h"
#include "SourceFile.h"
#include "Sources.h"
#include "diagnostics/Printable.h"

namespace QovJbf {

using Qov::Util::Quote;
using Qov::Util::Raise;
using ErrorType = Qov::Util::Exception::ErrorType;

namespace {

/// The closed outputs whose locks are kept, by path.
using KeptLocks = std::map<std::string, Descriptor>;
KeptLocks* gpKeptLocks = nullptr;

/// Returns true if both are the same regular file.
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

/// Makes a regular file empty. A file that is empty is left alone: ext4 needs long to close a file
/// that was truncated, because it allocates its blocks then.
bool Truncate(const Descriptor& output) {
  struct stat status {};
  if (::fstat(output.Get(), &status) != 0) return false;
  return !S_ISREG(status.st_mode) || status.st_size == 0 || ::ftruncate(output.Get(), 0) == 0;
}

/// Returns the file at `path`, whose lock was kept. Raises WriteError if the path leads to another
/// file.
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

}  // namespace

Descriptor OpenAndLock(const std::string& path, int flags) {
  constexpr mode_t kMode = 0666;  // the umask removes bits
  Descriptor output(RetryWithFewerHandles([&] { return ::open(path.c_str(), flags, kMode); },
                                          [](int result) { return result != -1; }));
  if (output.IsOpen() && IsRegular(output.Get())) Lock(output, path);
  return output;
}

std::FILE* OpenOutput(const std::string& path, const char* mode) {
  const bool isNew = *mode == 'w';
  const bool isKept = gpKeptLocks != nullptr && gpKeptLocks->contains(path);
  Descriptor output = isKept ? Reopen(path, gpKeptLocks->at(path))
                             : OpenAndLock(path, O_RDWR | O_CLOEXEC | (isNew ? O_CREAT : 0));
  if (!output.IsOpen()) return nullptr;
  if (isNew && !Truncate(output)) return nullptr;
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

void StartKeepingLocks() {
  QOV_ASSERT(gpKeptLocks == nullptr);
  gpKeptLocks = new KeptLocks;
}

void StopKeepingLocks() { delete std::exchange(gpKeptLocks, nullptr); }

}  // namespace QovJbf
