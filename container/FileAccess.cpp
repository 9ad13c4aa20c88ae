#include "FileAccess.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <limits>

#include "Qov/Log/Record.h"
#include "Qov/Util/Raise.h"

namespace QovJbf {

using Qov::Util::RaiseReadError;
using Qov::Util::RaiseWriteFailure;

namespace {

constexpr std::uint64_t kLargestOffset = std::numeric_limits<off_t>::max();

}  // namespace

std::uint64_t GetFileSize(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

std::uint64_t GetFileLength(const char* source, std::FILE* file, unsigned long line) {
  if (file == nullptr || fseeko(file, 0, SEEK_END) != 0) RaiseReadError(source, line);
  const off_t length = ftello(file);
  if (length < 0) RaiseReadError(source, line);
  return static_cast<std::uint64_t>(length);
}

void SeekToRead(const char* source, std::FILE* file, std::uint64_t position, unsigned long line) {
  if (file == nullptr || position > kLargestOffset ||
      fseeko(file, static_cast<off_t>(position), SEEK_SET) != 0) {
    RaiseReadError(source, line);
  }
}

void ReadAt(const char* source, std::FILE* file, std::uint64_t position, void* target,
            std::size_t n, unsigned long line) {
  SeekToRead(source, file, position, line);
  if (std::fread(target, 1, n, file) != n) RaiseReadError(source, line);
}

void SeekToWrite(const char* source, std::FILE* file, std::uint64_t position, unsigned long line) {
  // fseeko would flush as well, but its error does not distinguish a full disk from a wrong
  // position.
  if (std::fflush(file) != 0) RaiseWriteFailure(source, errno, line);
  if (fseeko(file, static_cast<off_t>(position), SEEK_SET) == 0) return;
  Qov::Log::Trace(source) << "File positioning failed";
  Qov::Util::Raise(source, Qov::Util::Exception::ErrorType::WriteError, "Saving the buffer failed",
                   line);
}

void WriteAt(const char* source, std::FILE* file, std::uint64_t position, const void* data,
             std::size_t n, unsigned long line) {
  SeekToWrite(source, file, position, line);
  if (std::fwrite(data, 1, n, file) != n) RaiseWriteFailure(source, errno, line);
}

std::uint64_t CopyInFileSystem(int source, std::uint64_t from, int target, std::uint64_t to,
                               std::uint64_t n) {
  auto begin = static_cast<off_t>(from);
  auto end = static_cast<off_t>(to);
  std::uint64_t done = 0;
  while (done < n) {
    const ssize_t part = ::copy_file_range(source, &begin, target, &end, n - done, 0);
    if (part <= 0) break;
    done += static_cast<std::uint64_t>(part);
  }
  return done;
}

void StartWriteback(std::FILE* file, std::uint64_t position, std::uint64_t n) {
  static_cast<void>(::sync_file_range(::fileno(file), static_cast<off_t>(position),
                                      static_cast<off_t>(n), SYNC_FILE_RANGE_WRITE));
}

void CheckInFile(const char* source, std::uint64_t fileLength, std::uint64_t position,
                 std::uint64_t n, unsigned long line) {
  if (n > fileLength || position > fileLength - n) RaiseReadError(source, line);
}

}  // namespace QovJbf
