#include "Completion.h"

#include <filesystem>
#include <sstream>
#include <system_error>
#include <utility>

#include "CompletionNames.h"

namespace Qov::Tools {
namespace {

std::vector<std::string> SubcommandNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* subcommand : app.get_subcommands([](const CLI::App*) { return true; })) {
    names.push_back(subcommand->get_name());
  }
  return names;
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

/// The words of a subcommand, sorted.
struct TypedWords {
  std::vector<std::string> mArguments;
  const CLI::Option* mpOption = nullptr;  ///< The option whose value comes next, or null.
};

TypedWords SortWords(const CLI::App& subcommand, const std::vector<std::string>& words) {
  TypedWords typed;
  for (const std::string& word : words) {
    if (word == "=") continue;  // shells split --option=value
    if (word.starts_with('-')) {
      const CLI::Option* option = subcommand.get_option_no_throw(word);
      const bool takesValue = option != nullptr && option->get_items_expected_max() > 0;
      typed.mpOption = takesValue ? option : nullptr;
    } else if (typed.mpOption != nullptr) {
      typed.mpOption = nullptr;
    } else {
      typed.mArguments.push_back(word);
    }
  }
  return typed;
}

/// Returns the argument after `count` others, or null.
const CLI::Option* FindArgument(const CLI::App& subcommand, std::size_t count) {
  for (const CLI::Option* option :
       subcommand.get_options([](const CLI::Option* any) { return any->get_positional(); })) {
    const auto most = static_cast<std::size_t>(option->get_items_expected_max());
    if (count < most) return option;
    count -= most;
  }
  return nullptr;
}

/// Returns the files among the arguments, at most two.
std::vector<std::string> FindFiles(const std::vector<std::string>& arguments) {
  constexpr std::size_t kMost = 2;
  std::vector<std::string> files;
  std::error_code error;
  for (const std::string& argument : arguments) {
    if (std::filesystem::is_regular_file(argument, error)) files.push_back(argument);
    if (files.size() == kMost) break;
  }
  return files;
}

/// Returns the words that can be the value of an option or argument: the fixed ones, then names.
std::vector<std::string> FindValues(const CLI::App& app, const CLI::Option& option,
                                    const std::vector<std::string>& arguments) {
  const NameSource source = FindNameSource(option.get_name());
  if (source == NameSource::Subcommands) return SubcommandNames(app);
  std::vector<std::string> values = Choices(option);
  if (source == NameSource::None) return values;
  const std::vector<std::string> names = ListNames(source, FindFiles(arguments));
  values.insert(values.end(), names.begin(), names.end());
  return values;
}

/// Returns all words that can follow `before`.
std::vector<std::string> Followers(const CLI::App& app, const std::vector<std::string>& before,
                                   bool isOption) {
  if (before.empty()) return KnownWords(app);
  const CLI::App* subcommand = FindSubcommand(app, before.front());
  if (subcommand == nullptr) return {};
  const TypedWords typed = SortWords(*subcommand, {before.begin() + 1, before.end()});
  if (typed.mpOption != nullptr) return FindValues(app, *typed.mpOption, typed.mArguments);
  if (isOption) return KnownWords(*subcommand);
  const CLI::Option* argument = FindArgument(*subcommand, typed.mArguments.size());
  return argument == nullptr ? std::vector<std::string>()
                             : FindValues(app, *argument, typed.mArguments);
}

}  // namespace

const CLI::App* FindSubcommand(const CLI::App& app, const std::string& name) {
  for (const CLI::App* subcommand : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (subcommand->get_name() == name) return subcommand;
  }
  return nullptr;
}

std::vector<std::string> KnownWords(const CLI::App& app) {
  std::vector<std::string> words = SubcommandNames(app);
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
  std::string before;
  const std::size_t equals = current.find('=');
  if (current.starts_with("--") && equals != current.npos) {
    before = current.substr(0, equals + 1);
    words.push_back(current.substr(0, equals));
    current.erase(0, equals + 1);
  }
  std::vector<std::string> found;
  for (const std::string& word : Followers(app, words, current.starts_with('-'))) {
    if (word.starts_with(current)) found.push_back(before + word);
  }
  return found;
}

}  // namespace Qov::Tools
