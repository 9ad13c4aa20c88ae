#pragma once

#include <string>

#include "check/Finding.h"

namespace Qov::Tools {

/// What checking one file showed.
struct FileReport {
  enum class Kind { Unknown, Model, ViewPoints };

  explicit FileReport(std::size_t limitPerCode) : mFindings(limitPerCode) {}

  Kind mKind = Kind::Unknown;
  std::string mVersion;  ///< Of the container; empty if it could not be read.
  Findings mFindings;
};

/// Checks everything that can be wrong with a file, stage by stage; a stage that has to stop does
/// not keep the others from going on. Holds one array at a time; takes time in proportion to the
/// file's uncompressed size, whatever is in it. Raises for a file that cannot be read or that is
/// no container at all.
void CheckFile(const std::string& path, FileReport& report);

}  // namespace Qov::Tools
