#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Json.h"
#include "SafeOutput.h"

namespace Qov::Tools {

/// Returns a name or any other text of a model as the page shows it: characters that could mislead
/// the reader and bytes that are not UTF-8 are \xNN.
std::string PageText(std::string_view text);

/// Returns the manifest as text without "<", ">" and "&", so that nothing in it can end its
/// element. It is in ASCII.
std::string FormatManifest(const Json& manifest);

/// Returns a manifest with all members, without content. `title` is not escaped.
Json MakeManifest(std::string_view title);

/// Returns the size of a page without the manifest and the arrays.
std::uint64_t GetFrameSize(std::string_view title);

/// Writes the page up to the place of the arrays.
void WritePageBegin(std::string_view title, const Json& manifest, SafeOutput& output);
/// Writes the page after the arrays.
void WritePageEnd(SafeOutput& output);

}  // namespace Qov::Tools
