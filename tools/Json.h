#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace Qov::Tools {

/// Members keep the order in which they were set. Who makes or reads one includes
/// <nlohmann/json.hpp>, which takes a compiler too long for sources that only pass one on.
using Json = nlohmann::ordered_json;

/// Raised by one whenever a member of a document is taken away or changes its meaning.
inline constexpr int kJsonSchema = 1;

/// The start of the one document that `ryx COMMAND --json` prints (docs/json.md).
Json MakeJsonDocument(std::string_view command);

/// JSON has no words for these numbers, so they become texts: "NaN", "Infinity", "-Infinity".
Json JsonNumber(double value);

/// The shortest number that reads back as the float.
Json JsonFloat(float value);

/// Bytes of any kind as text: what is no UTF-8 becomes \xNN, and a backslash is doubled.
std::string JsonText(std::string_view bytes);

/// The document as it is printed, without a newline at the end: indented, and in ASCII, so that
/// nothing in it can steer a terminal.
std::string FormatJson(const Json& document);

}  // namespace Qov::Tools
