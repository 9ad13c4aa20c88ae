#include "GivenOptions.h"

#include <CLI/App.hpp>

#include "Terminal.h"

namespace Qov::Tools {

std::vector<std::string> RepeatOption(const CLI::Option& option) {
  std::vector<std::string> arguments;
  if (option.count() == 0) return arguments;
  const std::string name = "--" + option.get_lnames().front();
  const bool isFlag = option.get_items_expected_max() == 0;
  const bool isPattern = option.get_type_name() == "PATTERN";
  for (const std::string& result : option.results()) {
    if (isFlag) {
      arguments.push_back(result == "true" ? name : name + "=" + result);
    } else {
      arguments.push_back(name + "=" + (isPattern ? Escape(result, {}) : result));
    }
  }
  return arguments;
}

}  // namespace Qov::Tools
