#include "check/FileBytes.h"

#include <cerrno>
#include <filesystem>

#include "Qov/Util/Raise.h"

namespace Qov::Tools {
namespace {

constexpr const char* kSource = "tools/check/FileBytes";
using ErrorType = Util::Exception::ErrorType;

}  // namespace

FileBytes::FileBytes(const std::string& path) {
  std::error_code error;
  if (std::filesystem::exists(path, error) && !std::filesystem::is_regular_file(path, error)) {
    Util::Raise(kSource, ErrorType::MiscellaneousError, "Not a regular file");
  }
  mFile.open(path, std::ios::binary);
  const int cause = errno;
  mLength = std::filesystem::file_size(path, error);
  if (!mFile || error) {
    Util::RaiseSystemFailure(kSource, ErrorType::MiscellaneousError,
                             "Unable to open file \"" + path + "\"", cause);
  }
}

void FileBytes::Read(std::uint64_t position, void* target, std::size_t n) {
  mFile.clear();
  mFile.seekg(static_cast<std::streamoff>(position));
  mFile.read(static_cast<char*>(target), static_cast<std::streamsize>(n));
  if (!mFile) Util::RaiseReadError(kSource);
}

}  // namespace Qov::Tools
