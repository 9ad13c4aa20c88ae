#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace Qov::Test {

/// Sets or removes an environment variable, and restores it at the end of the scope.
class ScopedEnvironment {
 public:
  ScopedEnvironment(std::string name, const std::optional<std::string>& value)
      : mName(std::move(name)) {
    if (const char* before = std::getenv(mName.c_str())) mBefore = before;
    Set(value);
  }
  ~ScopedEnvironment() { Set(mBefore); }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  void Set(const std::optional<std::string>& value) const {
    if (value) {
      setenv(mName.c_str(), value->c_str(), 1);
    } else {
      unsetenv(mName.c_str());
    }
  }

  std::string mName;
  std::optional<std::string> mBefore;
};

}  // namespace Qov::Test
