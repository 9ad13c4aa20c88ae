#include "SetLogFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <string>

#include "Qov/Log/Manager.h"

namespace {

std::string LogDirectory() {
  const char* path = std::getenv("PELORIN_TEMP_PATH");
  const bool isSet = path != nullptr && *path != '\0';
  return std::string(isSet ? path : "/tmp") + "/";
}

/// Somebody else may have put a link there, in a folder that all may write to, so that we empty a
/// file that is ours.
bool IsForeignLink(const std::string& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode) &&
         status.st_uid != ::geteuid();
}

}  // namespace

void SetLogFile() {
  const std::string directory = LogDirectory();
  const std::string path = directory + "RyxMerge_trace.log";
  if (::access(directory.c_str(), W_OK) != 0 || IsForeignLink(path)) {
    std::cerr << "Unable to set log file."
              << "Log information will be discorded." << std::endl;
    Qov::Log::LogTraceToNull();
    return;
  }
  std::cerr << "Writing log to \"" << path << "\"" << std::endl;
  Qov::Log::LogTraceToFile(path.c_str());
}
