#include "SourceFile.h"

#include <cerrno>
#include <list>
#include <utility>

#include "FileAccess.h"
#include "Qov/Util/Raise.h"
#include "StreamReaderSource.h"

namespace QovJbf {

namespace {

// The source files that have a handle, the one that was read last in front.
std::list<SourceFile*>& GetOpenSources() {
  static std::list<SourceFile*> sources;
  return sources;
}

[[noreturn]] void RaiseReadError() {
  Qov::Util::Raise(kStreamReaderSource, Qov::Util::Exception::ErrorType::ReadError,
                   "Unable to read from file");
}

}  // namespace

SourceFile::SourceFile(std::string path, std::FILE* file) : mPath(std::move(path)) {
  struct stat status {};
  if (fstat(fileno(file), &status) != 0) RaiseReadError();
  mDevice = status.st_dev;
  mInode = status.st_ino;
  mLength = static_cast<std::uint64_t>(status.st_size);
}

SourceFile::~SourceFile() { Close(); }

void SourceFile::Read(std::uint64_t position, void* target, std::size_t n) {
  std::list<SourceFile*>& open = GetOpenSources();
  if (mFile == nullptr) {
    Open();
  } else if (open.front() != this) {
    open.remove(this);
    open.push_front(this);
  }
  ReadAt(kStreamReaderSource, mFile, position, target, n);
}

bool SourceFile::IsSameAs(const std::string& path) const {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && status.st_dev == mDevice && status.st_ino == mInode;
}

bool SourceFile::IsSameAs(const struct stat& status) const {
  return status.st_dev == mDevice && status.st_ino == mInode &&
         static_cast<std::uint64_t>(status.st_size) == mLength;
}

void SourceFile::Open() {
  if (GetOpenSources().size() >= kMaximumOpenSources) CloseOldest();
  mFile = OpenSharingHandles(mPath, "rb");
  if (mFile == nullptr) RaiseReadError();
  GetOpenSources().push_front(this);
  struct stat status {};
  if (fstat(fileno(mFile), &status) != 0 || !IsSameAs(status)) {
    Close();
    RaiseReadError();
  }
  // StreamReader reads in large pieces or straight into its caller's memory.
  std::setvbuf(mFile, nullptr, _IONBF, 0);
}

bool SourceFile::CloseOldest() {
  if (GetOpenSources().empty()) return false;
  GetOpenSources().back()->Close();
  return true;
}

void SourceFile::Close() {
  if (mFile == nullptr) return;
  GetOpenSources().remove(this);
  std::fclose(mFile);
  mFile = nullptr;
}

std::FILE* OpenSharingHandles(const std::string& path, const char* mode) {
  while (true) {
    std::FILE* file = std::fopen(path.c_str(), mode);
    if (file != nullptr || (errno != EMFILE && errno != ENFILE)) return file;
    if (!SourceFile::CloseOldest()) return nullptr;
  }
}

}  // namespace QovJbf
