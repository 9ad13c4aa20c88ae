#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace Qov::Tools {

/// Members keep their order. Sources that create or read one include <nlohmann/json.hpp>. Other
/// sources do not, because it takes long to compile.
using Json = nlohmann::ordered_json;

/// Version of the documents. Increase it when a member is removed or changes its meaning.
inline constexpr int kJsonSchema = 1;

/// Returns the first members of the document that `ryx COMMAND --json` prints (docs/json.md).
Json MakeJsonDocument(std::string_view command);

/// Returns a number, or the texts "NaN", "Infinity" and "-Infinity", which JSON lacks as numbers.
Json JsonNumber(double value);

/// Returns the shortest number that reads back as the float.
Json JsonFloat(float value);

/// Returns any bytes as text. Bytes that are not UTF-8 become \xNN; a backslash is doubled.
std::string JsonText(std::string_view bytes);

/// Returns notes of the library as a list of texts.
Json NotesJson(const std::vector<std::string>& notes);

/// Returns the document as printed, without the last newline: indented, and in ASCII, so that it
/// cannot control a terminal.
std::string FormatJson(const Json& document);

}  // namespace Qov::Tools
