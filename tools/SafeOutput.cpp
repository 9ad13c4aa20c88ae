#include "SafeOutput.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <numeric>
#include <utility>

#include "Qov/Util/Raise.h"
#include "diagnostics/Printable.h"

namespace Qov::Tools {
namespace {

namespace fs = std::filesystem;

constexpr const char* kSource = "tools/SafeOutput";

}  // namespace

SafeOutput::SafeOutput(std::string path, bool overwrite) : mPath(std::move(path)) {
  mOutput.emplace(mPath, overwrite);
  QovJbf::Descriptor copy(::fcntl(mOutput->GetDescriptor(), F_DUPFD_CLOEXEC, 0));
  if (copy.IsOpen()) mFile.reset(::fdopen(copy.Get(), "wb"));
  if (mFile == nullptr) RaiseWriteError(errno);
  copy.Release();
}

void SafeOutput::RaiseWriteError(int error) const {
  Util::RaiseSystemFailure(kSource, Util::Exception::ErrorType::WriteError,
                           "cannot write " + Util::Quote(GetPath()), error);
}

void SafeOutput::Write(const void* data, std::size_t size) {
  const bool isWritten = !mOutput || size == 0 || std::fwrite(data, 1, size, mFile.get()) == size;
  if (!isWritten) RaiseWriteError(errno);
  mPosition += size;
}

void SafeOutput::Patch(std::uint64_t position, std::string_view bytes) {
  std::FILE* file = mFile.get();
  if (!mOutput) return;
  if (::fseeko(file, static_cast<off_t>(position), SEEK_SET) != 0 ||
      std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size() ||
      ::fseeko(file, static_cast<off_t>(mPosition), SEEK_SET) != 0) {
    RaiseWriteError(errno);
  }
}

void SafeOutput::Finish() {
  if (mFile == nullptr) return;
  if (std::fclose(mFile.release()) != 0) RaiseWriteError(errno);
  mOutput->Flush();
}

void SafeOutput::Commit() {
  Finish();
  if (mOutput) mOutput->Commit();
}

OutputSet::~OutputSet() {
  mFiles.clear();
  for (auto folder = mNewFolders.rbegin(); folder != mNewFolders.rend(); ++folder) {
    ::rmdir(folder->first.c_str());
    QovJbf::ForgetRemoval(folder->second);
  }
}

SafeOutput& OutputSet::Open(const std::string& path) {
  mFiles.push_back(mDiscard ? std::make_unique<SafeOutput>(path)
                            : std::make_unique<SafeOutput>(path, mOverwrite));
  return *mFiles.back();
}

std::uint64_t OutputSet::GetNumBytes() const {
  return std::accumulate(
      mFiles.begin(), mFiles.end(), std::uint64_t{0},
      [](std::uint64_t sum, const auto& file) { return sum + file->GetPosition(); });
}

void OutputSet::MakeFolder(const std::string& path) {
  if (mDiscard) return;
  const QovJbf::SignalBlock block;
  if (::mkdir(path.c_str(), 0777) == 0) {
    mNewFolders.emplace_back(path, QovJbf::RememberRemoval(path));
  } else if (errno != EEXIST || !fs::is_directory(path)) {
    Util::RaiseSystemFailure(kSource, Util::Exception::ErrorType::WriteError,
                             "cannot make the folder " + Util::Quote(path), errno);
  }
}

void OutputSet::CommitAll() {
  for (auto file = mFiles.rbegin(); file != mFiles.rend(); ++file) (*file)->Commit();
  for (const auto& [folder, removal] : mNewFolders) QovJbf::ForgetRemoval(removal);
  mNewFolders.clear();
}

}  // namespace Qov::Tools
