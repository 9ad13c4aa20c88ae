#pragma once

#include <cstdio>
#include <string>

/// Outputs: one process writes a file at a time. All of this is for regular files; a pipe or a
/// device is neither locked nor compared with its path.
namespace QovJbf {

/// Opens a file for writing, with mode "wb+" or "rb+", and locks it; truncates it for "wb+", but
/// only once it is locked. Returns null if the file cannot be opened. Raises MiscellaneousError if
/// another writer has locked it.
std::FILE* OpenOutput(const std::string& path, const char* mode);

/// Raises WriteError if `path` no longer leads to `file`.
void CheckStillAt(const std::string& path, std::FILE* file);

/// Called before an output is closed: keeps its lock if an OutputLocks object lives.
void KeepOutputLock(const std::string& path, std::FILE* file);

}  // namespace QovJbf
