#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Names in files that shells complete.
namespace Qov::Tools {

/// A kind of names in a file.
enum class NameSource { None, Nodes, Results, Instances, Views, Streams, Subcommands };

/// Returns the kind of names that are values of an option or argument: "--nodes", "RESULT".
NameSource FindNameSource(std::string_view argument);

/// Returns the names of that kind in the files, as `ryx` shows them in a pipe, without repetitions.
/// Leaves out files that cannot be read. Reads no values of results.
std::vector<std::string> ListNames(NameSource source, const std::vector<std::string>& paths);

}  // namespace Qov::Tools
