#pragma once

#include <cstdio>
#include <string>

#include "Descriptor.h"

/// Output files. Only one process writes a file at a time, because outputs are locked. This applies
/// to regular files. Pipes and devices are not locked, and not compared with their paths.
namespace QovJbf {

/// Opens a file and locks it. Returns a closed descriptor if the file cannot be opened. Raises
/// MiscellaneousError if another writer has locked it.
Descriptor OpenAndLock(const std::string& path, int flags);

/// Opens a file for writing, with mode "wb+" or "rb+", and locks it. Mode "wb+" truncates the file
/// after it is locked. Returns null if the file cannot be opened. Raises MiscellaneousError if
/// another writer has locked it.
std::FILE* OpenOutput(const std::string& path, const char* mode);

/// Raises WriteError if `path` does not lead to `file` any more.
void CheckStillAt(const std::string& path, std::FILE* file);

/// Starts to keep the locks of outputs that are closed. Must not be called twice in a row.
void StartKeepingLocks();
/// Releases the kept locks.
void StopKeepingLocks();
/// Keeps the lock of an output that is about to be closed, if locks are kept.
void KeepOutputLock(const std::string& path, std::FILE* file);

}  // namespace QovJbf
