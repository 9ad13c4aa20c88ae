#pragma once

#include <CLI/App.hpp>
#include <optional>
#include <string>

/// Validators for option values that the parser alone would read differently.
namespace Qov::Tools {

/// Returns a validator for transform() that accepts decimal digits only. The parser alone also
/// accepts octal and negative numbers.
CLI::Validator WholeNumber();

/// Returns a validator for transform() that accepts a number of bytes, with a decimal point and a
/// unit if needed: 500000, 500kB, 1.5MB, 2MiB. kB, MB and GB are powers of 1000; KiB, MiB and GiB,
/// of 1024.
CLI::Validator SizeValue();

/// Adds an option or argument whose text may be empty. The parser alone treats an empty text as a
/// missing one.
CLI::Option* AddText(CLI::App& app, const std::string& name, std::optional<std::string>& text,
                     const std::string& help);

}  // namespace Qov::Tools
