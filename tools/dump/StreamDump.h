#pragma once

#include <optional>
#include <string>

#include "Json.h"
#include "Output.h"

namespace Qov::Tools {

/// Writes the uncompressed bytes of a stream, as far as they can be read; then raises why not.
/// Raises ElementNotFound if there is no such stream.
void WriteStream(const std::string& path, const std::string& stream, Output& output);

/// Shows where the blocks of a container lie, or those of one stream: as a table, or, if
/// `document` is given, as that document with one more member. What cannot be read is raised
/// after what could be is shown.
void ShowBlocks(const std::string& path, const std::optional<std::string>& stream,
                std::optional<Json> document, Output& output);

}  // namespace Qov::Tools
