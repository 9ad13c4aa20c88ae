#include "OptionValues.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>
#include <system_error>
#include <utility>

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

/// Returns an error message, or an empty string, as the parser expects.
std::string NormalizeSize(std::string& word) {
  static constexpr auto kUnits =
      std::to_array<std::pair<std::string_view, double>>({{"", 1},
                                                          {"b", 1},
                                                          {"kb", 1e3},
                                                          {"mb", 1e6},
                                                          {"gb", 1e9},
                                                          {"kib", 1024},
                                                          {"mib", 1024.0 * 1024},
                                                          {"gib", 1024.0 * 1024 * 1024}});
  constexpr double kGreatest = 1e15;
  double number = 0;
  const auto [end, error] =
      std::from_chars(word.data(), word.data() + word.size(), number, std::chars_format::fixed);
  std::string unit = word.substr(static_cast<std::size_t>(end - word.data()));
  for (char& letter : unit) letter = static_cast<char>(letter | ' ');
  const auto found = std::find_if(kUnits.begin(), kUnits.end(),
                                  [&unit](const auto& known) { return known.first == unit; });
  if (error != std::errc() || found == kUnits.end() || !(number >= 0) ||
      number * found->second > kGreatest) {
    return fmt::format("\"{}\" should be a number of bytes, such as 500kB or 2MiB", word);
  }
  word = fmt::format("{:.0f}", number * found->second);
  return "";
}

}  // namespace

CLI::Validator SizeValue() { return {NormalizeSize, ""}; }

CLI::Validator WholeNumber() { return {NormalizeWholeNumber, ""}; }

CLI::Option* AddText(CLI::App& app, const std::string& name, std::optional<std::string>& text,
                     const std::string& help) {
  return app.add_option_function<std::string>(
      name, [&text](const std::string& word) { text = word; }, help);
}

}  // namespace Qov::Tools
