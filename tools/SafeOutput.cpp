#include "SafeOutput.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>

#include "diagnostics/Printable.h"
#include "Qov/Util/Raise.h"

namespace Qov::Tools {
namespace {

namespace fs = std::filesystem;

constexpr const char* kSource = "tools/SafeOutput";
constexpr std::array<int, 3> kSignals = {SIGHUP, SIGINT, SIGTERM};

/// What the signal handler removes. Entries are added at the front and stay; an entry without a
/// path is done with.
struct Removal {
  std::atomic<char*> mPath;
  Removal* mpNext;
};
std::atomic<Removal*> gRemovals{nullptr};

/// Remembers a file or a folder. Paths that find no memory are not removed by signals.
void Remember(const std::string& path) {
  auto* removal = new Removal{{::strdup(path.c_str())}, gRemovals.load()};
  gRemovals.store(removal);
}

void Forget(const std::string& path) {
  for (Removal* removal = gRemovals.load(); removal != nullptr; removal = removal->mpNext) {
    char* stored = removal->mPath.load();
    if (stored == nullptr || path != stored) continue;
    removal->mPath.store(nullptr);
    std::free(stored);
    return;
  }
}

/// Files come before the folders that hold them, because they were added later.
extern "C" void RemoveAndEnd(int signal) {
  for (Removal* removal = gRemovals.load(); removal != nullptr; removal = removal->mpNext) {
    const char* path = removal->mPath.load();
    if (path != nullptr && ::unlink(path) != 0) ::rmdir(path);
  }
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

std::string TemporaryPathFor(const std::string& path) {
  const fs::path target(path);
  return (target.parent_path() / ("." + target.filename().string() + ".XXXXXX")).string();
}

/// Gives the file the mode that a new file gets.
void SetUsualMode(int descriptor) {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  ::fchmod(descriptor, 0666 & ~mask);
}

}  // namespace

SafeOutput::SafeOutput(std::string path, bool overwrite)
    : mPath(std::move(path)), mTemporaryPath(TemporaryPathFor(mPath)) {
  std::error_code error;
  const bool exists = fs::exists(fs::symlink_status(mPath, error));
  if (exists && !overwrite) {
    Util::Raise(kSource, Util::Exception::ErrorType::ElementExists,
                Util::Quote(mPath) + " exists: name another output, or use --overwrite");
  }
  if (exists && !fs::is_regular_file(mPath, error)) {
    Util::Raise(kSource, Util::Exception::ErrorType::WriteError,
                Util::Quote(mPath) + " is not a file that can be replaced");
  }
  const int descriptor = ::mkostemp(mTemporaryPath.data(), O_CLOEXEC);
  if (descriptor < 0) RaiseWriteError(errno);
  Remember(mTemporaryPath);
  SetUsualMode(descriptor);
  mFile.reset(::fdopen(descriptor, "wb"));
  if (mFile == nullptr) RaiseWriteError(errno);
}

SafeOutput::~SafeOutput() {
  if (mTemporaryPath.empty()) return;
  mFile.reset();
  ::unlink(mTemporaryPath.c_str());
  Forget(mTemporaryPath);
}

void SafeOutput::RaiseWriteError(int error) const {
  Util::RaiseSystemFailure(kSource, Util::Exception::ErrorType::WriteError,
                           "cannot write " + Util::Quote(mPath), error);
}

void SafeOutput::Write(const void* data, std::size_t size) {
  if (size != 0 && std::fwrite(data, 1, size, mFile.get()) != size) RaiseWriteError(errno);
  mPosition += size;
}

void SafeOutput::Patch(std::uint64_t position, std::string_view bytes) {
  std::FILE* file = mFile.get();
  if (::fseeko(file, static_cast<off_t>(position), SEEK_SET) != 0 ||
      std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size() ||
      ::fseeko(file, static_cast<off_t>(mPosition), SEEK_SET) != 0) {
    RaiseWriteError(errno);
  }
}

void SafeOutput::Finish() {
  if (mFile == nullptr) return;
  if (std::fflush(mFile.get()) != 0 || ::fsync(::fileno(mFile.get())) != 0) RaiseWriteError(errno);
  if (std::fclose(mFile.release()) != 0) RaiseWriteError(errno);
}

void SafeOutput::Commit() {
  Finish();
  if (::rename(mTemporaryPath.c_str(), mPath.c_str()) != 0) RaiseWriteError(errno);
  Forget(mTemporaryPath);
  mTemporaryPath.clear();
}

OutputSet::~OutputSet() {
  mFiles.clear();
  for (auto folder = mNewFolders.rbegin(); folder != mNewFolders.rend(); ++folder) {
    ::rmdir(folder->c_str());
    Forget(*folder);
  }
}

SafeOutput& OutputSet::Open(const std::string& path) {
  mFiles.push_back(std::make_unique<SafeOutput>(path, mOverwrite));
  return *mFiles.back();
}

void OutputSet::MakeFolder(const std::string& path) {
  if (::mkdir(path.c_str(), 0777) == 0) {
    mNewFolders.push_back(path);
    Remember(path);
  } else if (errno != EEXIST || !fs::is_directory(path)) {
    Util::RaiseSystemFailure(kSource, Util::Exception::ErrorType::WriteError,
                             "cannot make the folder " + Util::Quote(path), errno);
  }
}

void OutputSet::CommitAll() {
  for (auto file = mFiles.rbegin(); file != mFiles.rend(); ++file) (*file)->Commit();
  for (const std::string& folder : mNewFolders) Forget(folder);
  mNewFolders.clear();
}

void RemoveOutputsOnSignals() {
  for (const int signal : kSignals) std::signal(signal, RemoveAndEnd);
}

}  // namespace Qov::Tools
