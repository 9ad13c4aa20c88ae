#pragma once

#include <cstdint>
#include <string>

namespace QovJbf {

/// What this process may use of the machine: the whole of it, or the part that its control groups
/// (of either version) grant.
class MachineShare {
 public:
  /// Looks at the system files beneath `root`.
  explicit MachineShare(std::string root = "");

  /// Processors, at least 1: those that the process may run on, or fewer if it may use only so
  /// much of their time.
  unsigned CountProcessors() const;
  /// Returns the bytes of memory that are available without swapping and within the limits of the
  /// process. Returns UINT64_MAX if the system does not report them.
  std::uint64_t GetFreeMemory() const;
  /// Returns the bytes of address space that the limits of the process leave. Returns UINT64_MAX
  /// without limits.
  std::uint64_t GetFreeAddressSpace() const;

 private:
  std::string mRoot;
};

/// Returns the number of threads that compress blocks of `blockSize` bytes. RYXMERGE_THREADS sets
/// it. Without that variable it is the number of processors, but at most as many as half of the
/// free memory can supply. In both cases the threads with their stacks must fit into half of the
/// address space that the process may still use.
unsigned GetThreadCount(std::uint64_t blockSize, const MachineShare& share = MachineShare());

/// Returns the bytes of address space that a thread takes.
std::uint64_t GetThreadSpace();

/// Bytes of chunks in use that keep so many threads busy with `length` bytes in blocks of
/// `blockSize`, 0 if it is not known how many there will be.
///
/// Blocks are filled one after the other, so a thread can begin one only when all of the one
/// before is queued: that takes a block for every thread but one. Half a block more makes up for
/// blocks that compress at different speeds. When the blocks do not go round evenly, the last
/// thread has less to do than the first: it may begin late, when less is queued before it, and
/// still end with the others.
std::uint64_t GetCompressionMemory(unsigned threads, std::uint64_t blockSize,
                                   std::uint64_t length = 0);

}  // namespace QovJbf
