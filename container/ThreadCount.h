#pragma once

#include <cstdint>

#include "Qov/Jbf/Compressor.h"
#include "SystemResources.h"

namespace QovJbf {

/// The largest number of threads that compress.
inline constexpr unsigned kMostThreads = 256;

/// Returns the number of threads that compress blocks of `blockSize` bytes. `wanted` sets it, or
/// the environment variable RYXMERGE_THREADS if `wanted` is 0. Without both it is the number of
/// processors, but at most the number of threads whose data fit into half of the free memory. In
/// both cases the threads with their stacks must fit into half of the free address space.
unsigned GetThreadCount(std::uint64_t blockSize,
                        const SystemResources& resources = SystemResources(), unsigned wanted = 0,
                        Compressor compressor = Compressor::Zlib);

/// Returns the number of bytes of address space that a thread takes.
std::uint64_t GetThreadSpace();

/// Returns the number of bytes of chunks that keep `threads` threads busy while `length` bytes are
/// written in blocks of `blockSize`. `length` is 0 if it is not known.
///
/// Blocks are filled one after the other, so a thread can begin a block only when all bytes of the
/// block before are queued. That takes one block for each thread except one. Half a block more
/// allows for blocks that compress at different speeds. If the number of blocks is not a multiple
/// of the number of threads, the last thread has less work than the first. It can begin later, when
/// fewer bytes are queued before it, and still end at the same time.
std::uint64_t GetCompressionMemory(unsigned threads, std::uint64_t blockSize,
                                   std::uint64_t length = 0);

/// Returns the number of bytes that keep `threads` threads busy with Compressor::Fastest: each of
/// them has a block and its compressed form in memory. One block more is filled meanwhile, and one
/// waits to be written.
std::uint64_t GetWholeBlockMemory(unsigned threads, std::uint64_t blockSize);

}  // namespace QovJbf
