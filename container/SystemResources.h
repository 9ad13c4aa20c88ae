#pragma once

#include <cstdint>
#include <limits>
#include <string>

namespace QovJbf {

/// An amount without a limit.
inline constexpr std::uint64_t kUnlimited = std::numeric_limits<std::uint64_t>::max();

/// The processors and the memory that this process may use: those of the machine, or what its
/// control groups (version 1 or 2) allow.
class SystemResources {
 public:
  /// Reads the files of the system below the folder `root`.
  explicit SystemResources(std::string root = "");

  /// Returns the number of processors that the process may run on, or fewer if it may use only a
  /// part of their time. Returns at least 1.
  unsigned CountProcessors() const;
  /// Returns the number of bytes of memory that are available without swapping and within the
  /// limits of the process. Returns kUnlimited if the system does not report them.
  std::uint64_t GetFreeMemory() const;
  /// Returns the number of bytes of address space that the limits of the process leave. Returns
  /// kUnlimited if there are no limits.
  std::uint64_t GetFreeAddressSpace() const;

 private:
  std::string mRoot;
};

}  // namespace QovJbf
