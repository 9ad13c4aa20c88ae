#pragma once

#include <string>
#include <utility>

#include "Qov/Jbf/JbFile.h"

namespace QovRyx {

/// Sets QovJbf::ryx_file_version, the container version by whose rules records are read, for the
/// lifetime of the object.
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
