#pragma once

#include <CLI/App.hpp>
#include <optional>
#include <string>

/// Values of options that the parser would read in ways of its own.
namespace Qov::Tools {

/// For transform(): takes decimal digits alone. The parser knows octal and negative counts, too.
CLI::Validator WholeNumber();

/// An option or argument whose text counts even if it is empty, which the parser takes for none.
CLI::Option* AddText(CLI::App& app, const std::string& name, std::optional<std::string>& text,
                     const std::string& help);

}  // namespace Qov::Tools
