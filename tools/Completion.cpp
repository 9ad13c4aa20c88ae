#include "Completion.h"

#include <sstream>
#include <utility>

namespace Qov::Tools {
namespace {

const CLI::App* FindSubcommand(const CLI::App& app, const std::string& name) {
  for (const CLI::App* subcommand : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (subcommand->get_name() == name) return subcommand;
  }
  return nullptr;
}

/// Returns the words in braces of an option's type, such as "TEXT:{a,b}".
std::vector<std::string> Choices(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const std::size_t open = type.find('{');
  const std::size_t close = type.find('}', open);
  if (open == type.npos || close == type.npos) return {};
  std::istringstream list(type.substr(open + 1, close - open - 1));
  std::vector<std::string> choices;
  for (std::string choice; std::getline(list, choice, ',');) choices.push_back(choice);
  return choices;
}

/// Returns all words that can follow `before`.
std::vector<std::string> Followers(const CLI::App& app, std::vector<std::string> before,
                                   bool isOption) {
  if (before.empty()) return KnownWords(app);
  const CLI::App* subcommand = FindSubcommand(app, before.front());
  if (subcommand == nullptr) return {};
  if (before.back() == "=") before.pop_back();  // shells split --option=value
  const CLI::Option* option =
      before.back().starts_with('-') ? subcommand->get_option_no_throw(before.back()) : nullptr;
  if (option != nullptr && option->get_items_expected_max() > 0) return Choices(*option);
  return isOption ? KnownWords(*subcommand) : std::vector<std::string>();
}

}  // namespace

std::vector<std::string> KnownWords(const CLI::App& app) {
  std::vector<std::string> words;
  for (const CLI::App* subcommand : app.get_subcommands([](const CLI::App*) { return true; })) {
    words.push_back(subcommand->get_name());
  }
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) words.push_back("--" + name);
  }
  return words;
}

std::vector<std::string> Complete(const CLI::App& app, std::vector<std::string> words) {
  if (words.empty()) words.emplace_back();
  std::string current = std::move(words.back());
  words.pop_back();
  if (current == "=") current.clear();
  std::vector<std::string> found;
  for (std::string& word : Followers(app, std::move(words), current.starts_with('-'))) {
    if (word.starts_with(current)) found.push_back(std::move(word));
  }
  return found;
}

}  // namespace Qov::Tools
