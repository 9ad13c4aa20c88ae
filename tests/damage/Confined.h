#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace Qov::Test {

/// What is wrong with case number `i`; empty if nothing is.
using Case = std::function<std::string(std::size_t i)>;

/// Runs the cases 0 ... n-1 in a process of its own, which may take 1 GiB of address space and,
/// for all of them, some minutes of processor time. Returns what the first one that fails says, or
/// the signal that it ended with; empty if there is none.
std::string RunConfined(std::size_t n, const Case& run);

}  // namespace Qov::Test
