#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

namespace Qov::Tools {

/// What a shell runs to complete a command line: this word and the words typed so far, the last
/// of which is the unfinished one.
inline constexpr const char* kCompleteWord = "__complete";

/// Everything that could stand where a word was not understood: subcommands and options.
std::vector<std::string> KnownWords(const CLI::App& app);

/// What the last of `words` could become: a subcommand, an option, or a value of an option that
/// takes one of a few. Where any text or file may stand there is nothing.
std::vector<std::string> Complete(const CLI::App& app, std::vector<std::string> words);

}  // namespace Qov::Tools
