#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace Qov::Test {

/// Returns the folder that the environment variable RYXMERGE_SHARED_MODELS names: sample models
/// that are not part of the repository. Empty if it is not set; tests then skip these models.
inline std::filesystem::path SharedModelsDir() {
  const char* folder = std::getenv("RYXMERGE_SHARED_MODELS");
  return folder != nullptr ? folder : "";
}

/// Returns the path of a sample model, such as "plate.ryx"; empty if it does not exist.
inline std::string FindSharedModel(const std::string& name) {
  if (SharedModelsDir().empty()) return {};
  const std::filesystem::path path = SharedModelsDir() / name;
  std::error_code error;
  return std::filesystem::is_regular_file(path, error) ? path.string() : std::string();
}

}  // namespace Qov::Test
