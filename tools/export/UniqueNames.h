#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>

namespace Qov::Tools {

/// Makes names different from one another: the second "a" becomes "a 2".
class UniqueNames {
 public:
  std::string Make(const std::string& name) {
    if (mNames.insert(name).second) return name;
    std::size_t& n = mNumbers.try_emplace(name, 1).first->second;
    std::string unique;
    do {
      unique = name + " " + std::to_string(++n);
    } while (!mNames.insert(unique).second);
    return unique;
  }

 private:
  std::set<std::string> mNames;
  std::map<std::string, std::size_t> mNumbers;  ///< The last number that a name got.
};

}  // namespace Qov::Tools
