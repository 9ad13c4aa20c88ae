#pragma once

#include <string>
#include <utility>

#include "Qov/Jbf/JbFile.h"

namespace QovRyx {

/// Lets the records of a file be read by the rules of its container version, for as long as the
/// object lives.
class FileVersionScope {
 public:
  explicit FileVersionScope(std::string version)
      : mPrevious(std::exchange(QovJbf::ryx_file_version, std::move(version))) {}
  ~FileVersionScope() { QovJbf::ryx_file_version = std::move(mPrevious); }
  FileVersionScope(const FileVersionScope&) = delete;
  FileVersionScope& operator=(const FileVersionScope&) = delete;

 private:
  std::string mPrevious;
};

}  // namespace QovRyx
