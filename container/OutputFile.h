#pragma once

#include <cstdio>
#include <string>

/// Output files: only one process writes a file at a time. This holds for regular files; a pipe or
/// a device is neither locked nor compared with its path.
namespace QovJbf {

/// Opens a file for writing, with mode "wb+" or "rb+", and locks it. Mode "wb+" truncates the file
/// after it is locked. Returns null if the file cannot be opened. Raises MiscellaneousError if
/// another writer has locked it.
std::FILE* OpenOutput(const std::string& path, const char* mode);

/// Raises WriteError if `path` no longer leads to `file`.
void CheckStillAt(const std::string& path, std::FILE* file);

/// Keeps the lock of an output that is about to be closed if an OutputLocks object exists.
void KeepOutputLock(const std::string& path, std::FILE* file);

}  // namespace QovJbf
