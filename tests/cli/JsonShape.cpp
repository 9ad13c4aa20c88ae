#include "JsonShape.h"

#include <nlohmann/json.hpp>
#include <sstream>

#include "support/Files.h"

namespace Qov::Test {
namespace {

bool IsOf(const Tools::Json& value, const std::string& type) {
  if (type == "text") return value.is_string();
  if (type == "count") return value.is_number_unsigned();
  if (type == "flag") return value.is_boolean();
  if (type == "null") return value.is_null();
  if (type == "number") {
    return value.is_number() || value == "NaN" || value == "Infinity" || value == "-Infinity";
  }
  return type == "any";
}

}  // namespace

JsonShape::JsonShape(const std::string& command) {
  ReadPage(ReadFile(RYX_DOCS_DIR "/json.md"));
  ReadPage(ReadFile(RYX_DOCS_DIR "/json/" + command + ".md"));
}

std::string JsonShape::Check(const Json& value, const std::string& type,
                             const std::string& place) const {
  if (const std::size_t bar = type.find(" or "); bar != type.npos) {
    const std::string wrong = Check(value, type.substr(0, bar), place);
    return wrong.empty() ? wrong : Check(value, type.substr(bar + 4), place);
  }
  if (type.starts_with("list of ")) return CheckAll(value, type.substr(8), place, true);
  if (type.starts_with("map of ")) return CheckAll(value, type.substr(7), place, false);
  if (mObjects.contains(type)) return CheckObject(value, mObjects.at(type), place);
  return IsOf(value, type) ? "" : place + " is no " + type + ": " + value.dump() + "\n";
}

void JsonShape::ReadPage(const std::string& page) {
  std::istringstream lines(page);
  std::string section;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("## ")) section = line.substr(3);
    if (!line.starts_with("| `")) continue;
    const std::size_t nameEnd = line.find('`', 3);
    const std::size_t typeEnd = line.find(" |", nameEnd + 4);
    std::string type = line.substr(nameEnd + 4, typeEnd - nameEnd - 4);
    const std::size_t comma = type.find(", may be absent");
    mObjects[section].push_back(
        {line.substr(3, nameEnd - 3), type.substr(0, comma), comma != type.npos});
  }
}

std::string JsonShape::CheckAll(const Json& value, const std::string& type,
                                const std::string& place, bool list) const {
  if (list ? !value.is_array() : !value.is_object()) return place + " is not a list or map\n";
  std::string wrong;
  for (const auto& [key, element] : value.items()) {
    wrong += Check(element, type, place + "/" + key);
  }
  return wrong;
}

std::string JsonShape::CheckObject(const Json& value, const Members& members,
                                   const std::string& place) const {
  if (!value.is_object()) return place + " is not an object\n";
  std::string wrong;
  std::size_t numKnown = 0;
  for (const Member& member : members) {
    const std::string inside = place + "/" + member.mName;
    if (value.contains(member.mName)) {
      wrong += Check(value[member.mName], member.mType, inside);
      ++numKnown;
    } else if (!member.mOptional) {
      wrong += inside + " is missing\n";
    }
  }
  return numKnown == value.size() ? wrong : wrong + place + " has members not described\n";
}

}  // namespace Qov::Test
