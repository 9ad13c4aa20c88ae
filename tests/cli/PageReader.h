#pragma once

#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace Qov::Test {

/// Reads a page of ryx html, independently of the program.
class PageReader {
 public:
  explicit PageReader(const std::string& path);

  const nlohmann::json& GetManifest() const { return mManifest; }
  /// Decodes an array of the manifest.
  std::vector<double> Decode(const nlohmann::json& buffer, std::size_t numComponents = 1) const;
  /// Returns the coordinates of each point of a mesh, and their greatest error.
  std::vector<std::vector<double>> Points(const nlohmann::json& mesh) const;
  /// Returns the values of a field, by component, from the 16-bit numbers; NaN for no number.
  std::vector<std::vector<double>> Values(const nlohmann::json& field) const;

 private:
  nlohmann::json mManifest;
  std::map<std::size_t, std::string> mBuffers;
};

}  // namespace Qov::Test
