#pragma once

#include <CLI/App.hpp>
#include <optional>
#include <string>

/// Validators for option values that the parser alone would read differently.
namespace Qov::Tools {

/// Returns a validator for transform() that accepts decimal digits only. The parser alone also
/// accepts octal and negative numbers.
CLI::Validator WholeNumber();

/// Adds an option or argument whose text may be empty. The parser alone treats an empty text as a
/// missing one.
CLI::Option* AddText(CLI::App& app, const std::string& name, std::optional<std::string>& text,
                     const std::string& help);

}  // namespace Qov::Tools
