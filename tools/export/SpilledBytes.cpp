#include "export/SpilledBytes.h"

#include <algorithm>
#include <cerrno>
#include <vector>

#include "Qov/Util/Raise.h"

namespace Qov::Tools {
namespace {

using ErrorType = Util::Exception::ErrorType;

[[noreturn]] void RaiseFailure(ErrorType type) {
  Util::RaiseSystemFailure("tools/export/SpilledBytes", type, "cannot use a temporary file in /tmp",
                           errno);
}

}  // namespace

SpilledBytes::SpilledBytes() : mFile(std::tmpfile(), &std::fclose) {
  if (mFile == nullptr) RaiseFailure(ErrorType::WriteError);
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
