#include "TemporaryOutput.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <random>
#include <utility>

#include "OutputFile.h"
#include "Qov/Util/Raise.h"
#include "SignalRemovals.h"
#include "SourceFile.h"
#include "diagnostics/Printable.h"

namespace QovJbf {

namespace {

namespace fs = std::filesystem;
using Qov::Util::Quote;
using Qov::Util::Raise;
using ErrorType = Qov::Util::Exception::ErrorType;

constexpr const char* kSource = "container/TemporaryOutput";
constexpr mode_t kPermissions = 07777;
constexpr mode_t kUsualMode = 0666;  // the umask removes bits
constexpr mode_t kOwnerAccess = 0600;

/// Returns the path that symbolic links at the end of `path` lead to. The file need not exist.
std::string FollowLinks(const std::string& path) {
  constexpr int kMostLinks = 40;  // as the kernel
  fs::path target = path;
  for (int i = 0; i < kMostLinks; ++i) {
    std::error_code error;
    const fs::path next = fs::read_symlink(target, error);
    if (error) return target.string();
    target = target.parent_path() / next;  // an absolute path replaces the folder
  }
  return path;  // opening it fails
}

std::string FolderOf(const std::string& path) {
  const std::string folder = fs::path(path).parent_path().string();
  return folder.empty() ? "." : folder;
}

/// Returns a new path beside `target`. A long name is cut, because names have a greatest length.
std::string MakeTemporaryPath(const std::string& target) {
  constexpr std::size_t kMostOfName = 200;
  constexpr std::size_t kNumRandom = 6;
  constexpr char kCharacters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
  std::random_device random;
  std::uniform_int_distribution<std::size_t> position(0, sizeof kCharacters - 2);
  const fs::path path(target);
  std::string name = "." + path.filename().string().substr(0, kMostOfName) + ".";
  for (std::size_t i = 0; i < kNumRandom; ++i) name += kCharacters[position(random)];
  return (path.parent_path() / name).string();
}

/// Returns true if an error means that the file system cannot flush or rename in that way.
bool IsUnsupported(int error) {
  return error == EINVAL || error == ENOSYS || error == EOPNOTSUPP || error == EROFS;
}

bool IsSameFile(const struct stat& left, const struct stat& right) {
  return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

/// Renames `from` unless `to` exists. Sets errno and returns false if that fails. On file systems
/// that can neither rename in that way nor make hard links, a file that another program makes
/// between the check and the renaming would be replaced.
bool RenameToNew(const char* from, const char* to) {
  if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return true;
  if (!IsUnsupported(errno)) return false;
  if (::link(from, to) == 0) {
    ::unlink(from);
    return true;
  }
  if (errno == EEXIST) return false;
  struct stat status {};
  if (::lstat(to, &status) == 0) {
    errno = EEXIST;
    return false;
  }
  return ::rename(from, to) == 0;
}

}  // namespace

TemporaryOutput::TemporaryOutput(std::string path, bool overwrite)
    : mPath(std::move(path)), mTarget(FollowLinks(mPath)), mOverwrite(overwrite) {
  struct stat status {};
  if (::lstat(mPath.c_str(), &status) == 0 && !mOverwrite) RaiseExists();
  if (::stat(mTarget.c_str(), &status) == 0) {
    if (!S_ISREG(status.st_mode)) {
      Raise(kSource, ErrorType::WriteError,
            Quote(mPath) + " is not a regular file and cannot be replaced: name another output");
    }
    LockReplaced(status);
  } else if (errno != ENOENT) {
    RaiseWriteError(errno);
  } else if (!fs::path(mTarget).has_filename()) {
    RaiseWriteError(mPath.empty() ? ENOENT : ENOTDIR);
  }
  MakeTemporaryFile();
}

TemporaryOutput::~TemporaryOutput() {
  if (mpRemoval == nullptr) return;
  ::unlink(mTemporaryPath.c_str());
  ForgetRemoval(mpRemoval);
}

void TemporaryOutput::LockReplaced(const struct stat& status) {
  Descriptor file = OpenAndLock(mTarget, O_RDWR | O_CLOEXEC | O_NONBLOCK);
  if (!file.IsOpen()) RaiseWriteError(errno);
  mReplaced.emplace(std::move(file), status.st_uid, status.st_gid, status.st_mode & kPermissions);
}

void TemporaryOutput::MakeTemporaryFile() {
  constexpr int kMostTrials = 100;
  const SignalBlock block;
  int descriptor = -1;
  for (int i = 0; i < kMostTrials && descriptor == -1; ++i) {
    mTemporaryPath = MakeTemporaryPath(mTarget);
    descriptor = RetryWithFewerHandles(
        [this] {
          return ::open(mTemporaryPath.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kUsualMode);
        },
        [](int result) { return result != -1; });
    if (descriptor == -1 && errno != EEXIST) RaiseWriteError(errno);
  }
  if (descriptor == -1) RaiseWriteError(EEXIST);
  Descriptor file(descriptor);
  try {
    mpRemoval = RememberRemoval(mTemporaryPath);
  } catch (const std::bad_alloc&) {
    ::unlink(mTemporaryPath.c_str());
    throw;
  }
  mFile.emplace(std::move(file));
  struct stat status {};
  ::fstat(mFile->Get(), &status);
  const mode_t usual = status.st_mode & kPermissions;
  mMode = mReplaced ? mReplaced->mMode : usual;
  const mode_t untilCommit = (usual & mMode) | kOwnerAccess;
  if (untilCommit != usual) ::fchmod(mFile->Get(), untilCommit);
}

/// Failures are ignored, because some file systems have neither owners nor permissions.
void TemporaryOutput::SetFinalMode() const {
  if (mReplaced && ::fchown(mFile->Get(), mReplaced->mUser, mReplaced->mGroup) != 0) {
    static_cast<void>(::fchown(mFile->Get(), static_cast<uid_t>(-1), mReplaced->mGroup) != 0);
  }
  ::fchmod(mFile->Get(), mMode);
}

void TemporaryOutput::Flush() {
  if (!mFile) return;
  if (::fstat(mFile->Get(), &mWritten) != 0) RaiseWriteError(errno);
  SetFinalMode();
  if (::fsync(mFile->Get()) != 0 && !IsUnsupported(errno)) RaiseWriteError(errno);
  mFile.reset();
  mReplaced.reset();
}

void TemporaryOutput::Commit() {
  Flush();
  struct stat now {};
  if (::lstat(mTemporaryPath.c_str(), &now) != 0) RaiseWriteError(errno);
  if (!IsSameFile(mWritten, now)) {
    Raise(kSource, ErrorType::WriteError,
          "Output file " + Quote(mPath) + " was replaced while it was written as " +
              Quote(mTemporaryPath));
  }
  Rename();
  ForgetRemoval(std::exchange(mpRemoval, nullptr));
  FlushFolder();
}

void TemporaryOutput::Rename() {
  const char* from = mTemporaryPath.c_str();
  const char* to = mTarget.c_str();
  const bool isDone = mOverwrite ? ::rename(from, to) == 0 : RenameToNew(from, to);
  if (isDone) return;
  if (errno == EEXIST) RaiseExists();
  RaiseWriteError(errno);
}

void TemporaryOutput::FlushFolder() const {
  const std::string path = FolderOf(mTarget);
  const Descriptor folder(RetryWithFewerHandles(
      [&path] { return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); },
      [](int result) { return result != -1; }));
  if (!folder.IsOpen() && errno == EACCES) return;  // a folder that can only be written
  if (folder.IsOpen() && (::fsync(folder.Get()) == 0 || IsUnsupported(errno))) return;
  Qov::Util::RaiseSystemFailure(kSource, ErrorType::WriteError,
                                Quote(mPath) + " is complete, but its folder " + Quote(path) +
                                    " cannot be flushed to the disk",
                                errno);
}

void TemporaryOutput::RaiseExists() const {
  Raise(kSource, ErrorType::ElementExists,
        Quote(mPath) + " exists: name another output, or let it be replaced (--overwrite)");
}

void TemporaryOutput::RaiseWriteError(int error) const {
  Qov::Util::RaiseSystemFailure(kSource, ErrorType::WriteError, "cannot write " + Quote(mPath),
                                error);
}

void CheckIsNotAnInput(const std::string& output, const std::vector<std::string>& inputs) {
  struct stat written {};
  if (::stat(output.c_str(), &written) != 0) return;
  for (const std::string& input : inputs) {
    struct stat read {};
    if (::stat(input.c_str(), &read) != 0 || !IsSameFile(read, written)) continue;
    Raise(kSource, ErrorType::MiscellaneousError,
          "Output file " + Quote(output) + " is also an input: name another output");
  }
}

void CheckRoom(const std::string& output, std::uint64_t numBytes) {
  struct statvfs system {};
  if (::statvfs(FolderOf(FollowLinks(output)).c_str(), &system) != 0) return;
  const std::uint64_t free = std::uint64_t{system.f_bavail} * system.f_frsize;
  if (numBytes <= free) return;
  Raise(kSource, ErrorType::WriteError,
        "Output file " + Quote(output) + " needs about " + std::to_string(numBytes) +
            " bytes, but its disk has only " + std::to_string(free) +
            " free: make room, or name an output on another disk");
}

}  // namespace QovJbf
