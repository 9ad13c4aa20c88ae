#pragma once

#include <optional>
#include <string>

#include "Json.h"
#include "Output.h"

namespace Qov::Tools {

/// Writes the uncompressed bytes of a stream up to the first read error, which it then raises.
/// Raises ElementNotFound if the stream does not exist.
void WriteStream(const std::string& path, const std::string& stream, Output& output);

/// Shows the places of the blocks of a container, or of one stream: as a table, or, if `document`
/// is given, as that document with one more member. Raises a read error after the readable blocks
/// are shown.
void ShowBlocks(const std::string& path, const std::optional<std::string>& stream,
                std::optional<Json> document, Output& output);

}  // namespace Qov::Tools
