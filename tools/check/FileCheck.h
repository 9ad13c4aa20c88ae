#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "check/BlocksAhead.h"
#include "check/Finding.h"

namespace Qov::Tools {

/// Result of checking a file.
struct FileReport {
  enum class Kind { Unknown, Model, ViewPoints };

  explicit FileReport(std::size_t limitPerCode) : mFindings(limitPerCode) {}

  Kind mKind = Kind::Unknown;
  std::string mVersion;  ///< Container version; empty if it could not be read.
  Findings mFindings;
};

/// Checks files one after another. Decompresses the blocks of the next files on worker threads
/// meanwhile.
class FileChecks {
 public:
  FileChecks(const std::vector<std::string>& paths, std::size_t limitPerCode);
  ~FileChecks();

  /// Checks all parts of the next file. Call it once for each path. A check that has to stop does
  /// not stop the others. Keeps one array, and at most 152 MiB of the next blocks, in memory.
  /// The time is proportional to the uncompressed size of the file. Raises an error if the file
  /// cannot be read, is not a container or has changed since its blocks were listed.
  FileReport CheckNext();

 private:
  struct OpenFile;

  void OpenNext();

  const std::vector<std::string>& mPaths;
  std::size_t mLimitPerCode;
  std::size_t mNumAtOnce;
  std::size_t mNumOpened = 0;  ///< Of mPaths.
  BlocksAhead mAhead;
  std::deque<std::unique_ptr<OpenFile>> mFiles;
};

/// Checks one file as FileChecks does.
void CheckFile(const std::string& path, FileReport& report);

}  // namespace Qov::Tools
