#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace Qov::Test {

/// A new folder, removed with the object.
class TempDir {
 public:
  TempDir() {
    std::string name = testing::TempDir() + "ryx.XXXXXX";
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    mPath = name;
  }
  ~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(mPath, ignored);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  std::string operator/(const std::string& name) const { return (mPath / name).string(); }
  const std::filesystem::path& GetPath() const { return mPath; }

 private:
  std::filesystem::path mPath;
};

}  // namespace Qov::Test
