#include "SourceFile.h"

#include <fcntl.h>
#include <sys/resource.h>

#include <algorithm>
#include <cerrno>
#include <list>
#include <utility>

#include "FileAccess.h"
#include "Qov/Util/Raise.h"
#include "Sources.h"

namespace QovJbf {

namespace {

// Returns the source files that have a handle. The most recently used file comes first.
std::list<SourceFile*>& GetOpenSources() {
  static std::list<SourceFile*> sources;
  return sources;
}

}  // namespace

SourceFile::SourceFile(FileIdentity identity) : mIdentity(std::move(identity)) {}

SourceFile::~SourceFile() { Close(); }

void SourceFile::Read(std::uint64_t position, void* target, std::size_t n) {
  Use();
  ReadAt(kStreamReaderSource, mFile, position, target, n);
}

Descriptor SourceFile::DuplicateHandle() {
  Use();  // the most recently used file is closed last
  const auto duplicate = [this] { return ::fcntl(::fileno(mFile), F_DUPFD_CLOEXEC, 0); };
  int copy = duplicate();
  while (copy == -1 && (errno == EMFILE || errno == ENFILE) && GetOpenSources().size() > 1) {
    CloseOldest();
    copy = duplicate();
  }
  return Descriptor(copy);
}

// Opens the file if it has no handle, and makes it the most recently used one.
void SourceFile::Use() {
  std::list<SourceFile*>& open = GetOpenSources();
  if (mFile == nullptr) {
    Open();
  } else if (open.front() != this) {
    open.remove(this);
    open.push_front(this);
  }
}

void SourceFile::Open() {
  if (GetOpenSources().size() >= kMaximumOpenSources) CloseOldest();
  mFile = OpenSharingHandles(GetPath());
  if (mFile == nullptr && errno == ENOENT) mIdentity.RaiseChanged();
  if (mFile == nullptr) {
    Qov::Util::RaiseReadError(kStreamReaderSource);
  }
  GetOpenSources().push_front(this);
  try {
    mIdentity.CheckUnchanged(mFile);
  } catch (...) {
    Close();
    throw;
  }
  // StreamReader needs no buffer, because it reads large pieces, or directly into its caller's
  // memory.
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

std::size_t CountWorkerHandles() {
  constexpr rlim_t kMost = 64;
  struct rlimit limit {};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return 1;
  return static_cast<std::size_t>(std::clamp<rlim_t>(limit.rlim_cur / 4, 1, kMost));
}

std::FILE* OpenSharingHandles(const std::string& path) {
  return RetryWithFewerHandles([&] { return std::fopen(path.c_str(), "rb"); },
                               [](const std::FILE* file) { return file != nullptr; });
}

}  // namespace QovJbf
