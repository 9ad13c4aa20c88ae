#include "SetLogFile.h"

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

}  // namespace

void SetLogFile() {
  const std::string directory = LogDirectory();
  if (::access(directory.c_str(), W_OK) != 0) {
    std::cerr << "Unable to set log file."
              << "Log information will be discorded." << std::endl;
    Qov::Log::LogTraceToNull();
    return;
  }
  const std::string path = directory + "RyxMerge_trace.log";
  std::cerr << "Writing log to \"" << path << "\"" << std::endl;
  Qov::Log::LogTraceToFile(path.c_str());
}
