#include "Faults.h"

#include <fcntl.h>
#include <stdio_ext.h>
#include <zlib.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace Qov::Test::Faults {
namespace {

// Atomic, because workers allocate too. Checking for a fault must not allocate.
struct Plan {
  std::atomic<bool> mIsArmed = false;
  Call mCall = Call::Open;
  std::size_t mNumber = 0;
  bool mAndLater = false;
  std::atomic<std::size_t> mCount = 0;
  std::atomic<bool> mHasFailed = false;
};
Plan gPlan;

bool Fails(Call call, int error) {
  if (!gPlan.mIsArmed || gPlan.mCall != call) return false;
  const std::size_t count = ++gPlan.mCount;
  if (gPlan.mAndLater ? count < gPlan.mNumber : count != gPlan.mNumber) return false;
  gPlan.mHasFailed = true;
  errno = error;
  return true;
}

}  // namespace

void Arm(Call call, std::size_t n, bool andLater) {
  gPlan.mCall = call;
  gPlan.mNumber = n;
  gPlan.mAndLater = andLater;
  gPlan.mCount = 0;
  gPlan.mHasFailed = false;
  gPlan.mIsArmed = true;
}

bool Disarm() {
  gPlan.mIsArmed = false;
  return gPlan.mHasFailed;
}

}  // namespace Qov::Test::Faults

using Qov::Test::Faults::Call;
using Qov::Test::Faults::Fails;

extern "C" {

std::FILE* __real_fopen(const char* path, const char* mode);
std::FILE* __wrap_fopen(const char* path, const char* mode) {
  return Fails(Call::Open, EMFILE) ? nullptr : __real_fopen(path, mode);
}

int __real_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, mode_t mode) {
  return Fails(Call::Open, EMFILE) ? -1 : __real_open(path, flags, mode);
}

std::FILE* __real_fdopen(int descriptor, const char* mode);
std::FILE* __wrap_fdopen(int descriptor, const char* mode) {
  return Fails(Call::Open, ENOMEM) ? nullptr : __real_fdopen(descriptor, mode);
}

int __real_fclose(std::FILE* file);
int __wrap_fclose(std::FILE* file) {
  if (!Fails(Call::Close, ENOSPC)) return __real_fclose(file);
  __fpurge(file);  // discards the bytes that are not flushed
  __real_fclose(file);
  return EOF;
}

std::size_t __real_fread(void* target, std::size_t size, std::size_t n, std::FILE* file);
std::size_t __wrap_fread(void* target, std::size_t size, std::size_t n, std::FILE* file) {
  return Fails(Call::Read, EIO) ? __real_fread(target, size, n / 2, file)
                                : __real_fread(target, size, n, file);
}

std::size_t __real_fwrite(const void* source, std::size_t size, std::size_t n, std::FILE* file);
std::size_t __wrap_fwrite(const void* source, std::size_t size, std::size_t n, std::FILE* file) {
  return Fails(Call::Write, ENOSPC) ? __real_fwrite(source, size, n / 2, file)
                                    : __real_fwrite(source, size, n, file);
}

ssize_t __real_pread(int file, void* target, std::size_t n, off_t position);
ssize_t __wrap_pread(int file, void* target, std::size_t n, off_t position) {
  return Fails(Call::Read, EIO) ? -1 : __real_pread(file, target, n, position);
}

ssize_t __real_copy_file_range(int source, off_t* from, int target, off_t* to, std::size_t n,
                               unsigned flags);
ssize_t __wrap_copy_file_range(int source, off_t* from, int target, off_t* to, std::size_t n,
                               unsigned flags) {
  return Fails(Call::Write, ENOSPC) ? -1
                                    : __real_copy_file_range(source, from, target, to, n, flags);
}

int __real_fseeko(std::FILE* file, off_t offset, int whence);
int __wrap_fseeko(std::FILE* file, off_t offset, int whence) {
  return Fails(Call::Seek, EIO) ? -1 : __real_fseeko(file, offset, whence);
}

off_t __real_ftello(std::FILE* file);
off_t __wrap_ftello(std::FILE* file) { return Fails(Call::Tell, EIO) ? -1 : __real_ftello(file); }

int __real_fflush(std::FILE* file);
int __wrap_fflush(std::FILE* file) {
  return Fails(Call::Flush, ENOSPC) ? EOF : __real_fflush(file);
}

int __real_fsync(int descriptor);
int __wrap_fsync(int descriptor) { return Fails(Call::Sync, EIO) ? -1 : __real_fsync(descriptor); }

int __real_rename(const char* from, const char* to);
int __wrap_rename(const char* from, const char* to) {
  return Fails(Call::Rename, EIO) ? -1 : __real_rename(from, to);
}

void* __real_malloc(std::size_t size);
void* __wrap_malloc(std::size_t size) {
  return Fails(Call::Memory, ENOMEM) ? nullptr : __real_malloc(size);
}

void* __real_realloc(void* memory, std::size_t size);
void* __wrap_realloc(void* memory, std::size_t size) {
  return Fails(Call::Memory, ENOMEM) ? nullptr : __real_realloc(memory, size);
}

int __real_deflateInit_(z_streamp stream, int level, const char* version, int size);
int __wrap_deflateInit_(z_streamp stream, int level, const char* version, int size) {
  return Fails(Call::Zlib, ENOMEM) ? Z_MEM_ERROR
                                   : __real_deflateInit_(stream, level, version, size);
}

int __real_inflateInit_(z_streamp stream, const char* version, int size);
int __wrap_inflateInit_(z_streamp stream, const char* version, int size) {
  return Fails(Call::Zlib, ENOMEM) ? Z_MEM_ERROR : __real_inflateInit_(stream, version, size);
}

int __real_inflate(z_streamp stream, int flush);
int __wrap_inflate(z_streamp stream, int flush) {
  return Fails(Call::Inflate, ENOMEM) ? Z_MEM_ERROR : __real_inflate(stream, flush);
}

int __real_uncompress(Bytef* target, uLongf* length, const Bytef* source, uLong size);
int __wrap_uncompress(Bytef* target, uLongf* length, const Bytef* source, uLong size) {
  return Fails(Call::Inflate, ENOMEM) ? Z_MEM_ERROR
                                      : __real_uncompress(target, length, source, size);
}

}  // extern "C"

void* operator new(std::size_t size) {
  void* memory = std::malloc(size > 0 ? size : 1);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
