#include "Json.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "ErrorText.h"
#include "diagnostics/Utf8.h"

namespace Qov::Tools {

Json MakeJsonDocument(std::string_view command) {
  return {{"schema", kJsonSchema}, {"command", command}};
}

Json JsonNumber(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value > 0 ? "Infinity" : "-Infinity";
  return value;
}

Json JsonFloat(float value) {
  if (!std::isfinite(value)) return JsonNumber(double{value});
  return std::strtod(fmt::format("{}", value).c_str(), nullptr);
}

std::string JsonText(std::string_view bytes) {
  std::string text;
  while (!bytes.empty()) {
    const std::size_t length = DecodeFirst(bytes).mLength;
    const std::string_view character = bytes.substr(0, std::max<std::size_t>(length, 1));
    if (length == 0) {
      text += HexBytes(character);
    } else {
      text += character == "\\" ? "\\\\" : character;
    }
    bytes.remove_prefix(character.size());
  }
  return text;
}

Json NotesJson(const std::vector<std::string>& notes) {
  Json list = Json::array();
  for (const std::string& note : notes) list.push_back(JsonText(RestoreNames(note)));
  return list;
}

std::string FormatJson(const Json& document) { return document.dump(2, ' ', true); }

}  // namespace Qov::Tools
