#pragma once

#include <fcntl.h>
#include <unistd.h>

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

}  // namespace QovJbf
