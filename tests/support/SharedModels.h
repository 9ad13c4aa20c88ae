#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace Qov::Test {

/// The folder of sample models, which is no part of the repository: the environment variable
/// RYXMERGE_SHARED_MODELS names it, else the build does. Tests skip what is not there.
inline std::filesystem::path SharedModelsDir() {
  const char* fromEnvironment = std::getenv("RYXMERGE_SHARED_MODELS");
  return fromEnvironment != nullptr ? fromEnvironment : RYXMERGE_SHARED_MODELS_DIR;
}

/// The path of a sample model, such as "plate.ryx"; empty if it is not there.
inline std::string FindSharedModel(const std::string& name) {
  const std::filesystem::path path = SharedModelsDir() / name;
  std::error_code error;
  return std::filesystem::is_regular_file(path, error) ? path.string() : std::string();
}

}  // namespace Qov::Test
