#include "export/SpilledBytes.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <vector>

#include "Qov/Util/Raise.h"
#include "diagnostics/Printable.h"

namespace Qov::Tools {
namespace {

using ErrorType = Util::Exception::ErrorType;

std::string FolderOf(const std::string& path) {
  const std::string folder = std::filesystem::path(path).parent_path().string();
  return folder.empty() ? "." : folder;
}

/// Opens a file that has no name; returns -1 and sets errno if that fails.
int OpenNameless(const std::string& folder) {
  const int descriptor = ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
  if (descriptor >= 0 || (errno != EOPNOTSUPP && errno != EISDIR)) return descriptor;
  std::string path = folder + "/.ryx.XXXXXX";  // the file system cannot do without a name
  const int named = ::mkostemp(path.data(), O_CLOEXEC);
  if (named >= 0) ::unlink(path.c_str());
  return named;
}

}  // namespace

SpilledBytes::SpilledBytes(const SafeOutput& output) : mFolder(FolderOf(output.GetPath())) {
  const int descriptor = OpenNameless(mFolder);
  if (descriptor >= 0) mFile.reset(::fdopen(descriptor, "w+b"));
  if (mFile == nullptr) RaiseFailure(ErrorType::WriteError);
}

void SpilledBytes::RaiseFailure(ErrorType type) const {
  Util::RaiseSystemFailure("tools/export/SpilledBytes", type,
                           "cannot use a temporary file in " + Util::Quote(mFolder), errno);
}

void SpilledBytes::Append(const void* data, std::size_t size) {
  if (mIsReading && ::fseeko(mFile.get(), 0, SEEK_END) != 0) RaiseFailure(ErrorType::WriteError);
  mIsReading = false;
  if (size != 0 && std::fwrite(data, 1, size, mFile.get()) != size) {
    RaiseFailure(ErrorType::WriteError);
  }
  mSize += size;
}

void SpilledBytes::Read(std::uint64_t position, void* target, std::size_t size) {
  mIsReading = true;
  if (::fseeko(mFile.get(), static_cast<off_t>(position), SEEK_SET) != 0 ||
      std::fread(target, 1, size, mFile.get()) != size) {
    RaiseFailure(ErrorType::ReadError);
  }
}

void SpilledBytes::CopyTo(SafeOutput& output) {
  std::vector<char> piece(std::size_t{1} << 20U);
  for (std::uint64_t position = 0; position < mSize; position += piece.size()) {
    const auto size =
        static_cast<std::size_t>(std::min<std::uint64_t>(piece.size(), mSize - position));
    Read(position, piece.data(), size);
    output.Write(piece.data(), size);
  }
}

}  // namespace Qov::Tools
