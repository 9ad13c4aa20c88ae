#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace QovJbf {

/// A file descriptor that is closed with its owner.
class Descriptor {
 public:
  explicit Descriptor(int descriptor) : mDescriptor(descriptor) {}
  Descriptor(Descriptor&& other) noexcept : mDescriptor(other.Release()) {}
  ~Descriptor() {
    if (IsOpen()) ::close(mDescriptor);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  Descriptor& operator=(Descriptor&&) = delete;

  bool IsOpen() const { return mDescriptor != -1; }
  int Get() const { return mDescriptor; }
  int Release() { return std::exchange(mDescriptor, -1); }
  /// Returns another descriptor of the same open file. Both have the same locks.
  Descriptor Duplicate() const { return Descriptor(::fcntl(mDescriptor, F_DUPFD_CLOEXEC, 0)); }

 private:
  int mDescriptor;
};

/// Reads `n` bytes at a position. Returns false if that fails or if the file is shorter. Several
/// threads can read from one descriptor.
inline bool ReadFully(const Descriptor& file, std::uint64_t position, unsigned char* target,
                      std::size_t n) {
  while (n > 0) {
    const ssize_t part = ::pread(file.Get(), target, n, static_cast<off_t>(position));
    if (part < 0 && errno == EINTR) continue;
    if (part <= 0) return false;
    target += part;
    position += static_cast<std::uint64_t>(part);
    n -= static_cast<std::size_t>(part);
  }
  return true;
}

}  // namespace QovJbf
