#include "OptionValues.h"

#include <fmt/format.h>

#include <algorithm>

namespace Qov::Tools {
namespace {

/// Returns an error message, or an empty string, as the parser expects.
std::string NormalizeWholeNumber(std::string& word) {
  if (word.empty() || word.find_first_not_of("0123456789") != word.npos) {
    return fmt::format("\"{}\" should be decimal digits", word);
  }
  word.erase(0, std::min(word.find_first_not_of('0'), word.size() - 1));
  return "";
}

}  // namespace

CLI::Validator WholeNumber() { return {NormalizeWholeNumber, ""}; }

CLI::Option* AddText(CLI::App& app, const std::string& name, std::optional<std::string>& text,
                     const std::string& help) {
  return app.add_option_function<std::string>(
      name, [&text](const std::string& word) { text = word; }, help);
}

}  // namespace Qov::Tools
