#pragma once

#include <string>

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

/// Checks all parts of a file. A check that has to stop does not stop the others. Keeps one array
/// in memory at a time. The time is proportional to the uncompressed size of the file. Raises an
/// error if the file cannot be read or is not a container.
void CheckFile(const std::string& path, FileReport& report);

}  // namespace Qov::Tools
