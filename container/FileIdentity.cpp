#include "Qov/Jbf/FileIdentity.h"

#include <sys/stat.h>

#include <utility>

#include "Qov/Util/Raise.h"
#include "diagnostics/Printable.h"

namespace QovJbf {

using Qov::Util::Raise;
using Qov::Util::RaiseReadError;
using ErrorType = Qov::Util::Exception::ErrorType;

namespace {

constexpr const char* kSource = "include/Qov/Jbf/FileIdentity";

}  // namespace

FileIdentity::FileIdentity(std::string path, std::FILE* file)
    : FileIdentity(std::move(path), ::fileno(file)) {}

FileIdentity::FileIdentity(std::string path, int descriptor) : mPath(std::move(path)) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) {
    RaiseReadError(kSource);
  }
  mDevice = status.st_dev;
  mInode = status.st_ino;
  mSize = static_cast<std::uint64_t>(status.st_size);
  mModified = status.st_mtim;
}

bool FileIdentity::IsFileAt(const std::string& path) const {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && IsSameFile(status);
}

void FileIdentity::CheckUnchanged(std::FILE* file) const {
  struct stat status {};
  if (::fstat(::fileno(file), &status) != 0 || !IsSameState(status)) RaiseChanged();
}

void FileIdentity::CheckUnchanged() const {
  struct stat status {};
  if (::stat(mPath.c_str(), &status) != 0 || !IsSameState(status)) RaiseChanged();
}

void FileIdentity::RaiseChanged() const {
  Raise(kSource, ErrorType::ReadError,
        "File " + Qov::Util::Quote(mPath) +
            " changed while it was read; repeat the command when it is complete");
}

bool FileIdentity::IsSameFile(const struct stat& status) const {
  return status.st_dev == mDevice && status.st_ino == mInode;
}

bool FileIdentity::IsSameState(const struct stat& status) const {
  return IsSameFile(status) && static_cast<std::uint64_t>(status.st_size) == mSize &&
         status.st_mtim.tv_sec == mModified.tv_sec && status.st_mtim.tv_nsec == mModified.tv_nsec;
}

}  // namespace QovJbf
