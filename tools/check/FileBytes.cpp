#include "check/FileBytes.h"

#include <fcntl.h>

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
  mpFile = std::make_shared<const QovJbf::Descriptor>(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!mpFile->IsOpen()) {
    Util::RaiseSystemFailure(kSource, ErrorType::MiscellaneousError,
                             "Unable to open file \"" + path + "\"", errno);
  }
  mIdentity.emplace(path, mpFile->Get());
}

void FileBytes::Read(std::uint64_t position, void* target, std::size_t n) const {
  if (!QovJbf::ReadFully(*mpFile, position, static_cast<unsigned char*>(target), n)) {
    Util::RaiseReadError(kSource);
  }
}

}  // namespace Qov::Tools
