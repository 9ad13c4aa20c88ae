#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

namespace Qov::Tools {

/// First argument with which a shell asks for completions. The typed words follow; the last one is
/// unfinished.
inline constexpr const char* kCompleteWord = "__complete";

/// Returns the subcommand of that name, or null.
const CLI::App* FindSubcommand(const CLI::App& app, const std::string& name);

/// Returns the subcommands and options.
std::vector<std::string> KnownWords(const CLI::App& app);

/// Returns the completions of the last of `words`: subcommands, options, the values of an option
/// that has a fixed set of them, or names from the files among the words (FindNameSource). Returns
/// nothing where any text or file is allowed.
std::vector<std::string> Complete(const CLI::App& app, std::vector<std::string> words);

}  // namespace Qov::Tools
