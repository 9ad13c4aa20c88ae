#include "RecordPrinter.h"

#include <fmt/format.h>

#include <array>
#include <bit>
#include <cmath>
#include <utility>

#include "ValueText.h"

namespace Qov::Tools {
namespace {

constexpr std::array<const char*, 6> kActionTypes = {"rotate", "move",           "transform",
                                                     "colour", "applyViewPoint", "playAudio"};

/// Returns the name of the type, or its number if it is not known.
Json PrintActionType(int type) {
  if (type < 0) return "invalid";
  const auto position = static_cast<std::size_t>(type);
  return position < kActionTypes.size() ? Json(kActionTypes[position]) : Json(position);
}

std::string HexDigits(std::string_view bytes) {
  std::string digits;
  for (const char byte : bytes) digits += fmt::format("{:02X}", static_cast<unsigned char>(byte));
  return digits;
}

Json PrintAction(const QovRyx::BasicAction& action) {
  Json printed{{"type", PrintActionType(action.ActionType())}};
  QovRyx::VisitAction(action, [&printed](const auto& concrete) {
    printed.update(PrintRecord(concrete));  // actions have few fields
  });
  return printed;
}

bool IsSimple(const Json& value) { return !value.is_structured(); }

bool IsSimpleList(const Json& value) {
  if (!value.is_array()) return false;
  for (const Json& element : value) {
    if (!IsSimple(element)) return false;
  }
  return true;
}

/// Returns a number, with the float of the same bits if that has a usual magnitude. The bits of
/// common integers are hardly ever such a float.
std::string UnsignedText(std::uint64_t bits) {
  const auto number = std::bit_cast<float>(static_cast<std::uint32_t>(bits));
  const bool isFloat = std::isfinite(number) && std::fabs(number) > 1e-6F &&
                       std::fabs(number) < 1e9F && bits > 0xFFFF;
  return isFloat ? fmt::format("{} ({})", bits, FloatText(number)) : fmt::format("{}", bits);
}

std::string SimpleText(const Json& value, const TextStyle& style) {
  if (value.is_string()) return QuotedText(value.get_ref<const std::string&>(), style);
  if (value.is_number_unsigned()) return UnsignedText(value.get<std::uint64_t>());
  if (value.is_number_float()) return FloatText(static_cast<float>(value.get<double>()));
  return value.dump();
}

/// Writes one line, or one per row of a long list.
void WriteSimpleList(const std::string& label, const Json& list, Output& output) {
  constexpr std::size_t kInARow = 16;
  std::string line = label + ":";
  std::size_t inRow = 0;
  for (const Json& value : list) {
    if (inRow++ == kInARow) {
      output.Line(std::exchange(line, std::string(label.find_first_not_of(' ') + 2, ' ')));
      inRow = 1;
    }
    line += " " + SimpleText(value, output.GetStyle());
  }
  output.Line(line);
}

// NOLINTNEXTLINE(misc-no-recursion): bounded by the nesting of the record classes
void WriteField(const std::string& name, const Json& value, Output& output, std::size_t indent) {
  const std::string label = std::string(indent, ' ') + name;
  if (IsSimple(value)) {
    output.Line(label + ": " + SimpleText(value, output.GetStyle()));
  } else if (IsSimpleList(value)) {
    WriteSimpleList(label, value, output);
  } else {
    output.Line(label + ":");
    WriteRecord(value, output, indent + 2);
  }
}

}  // namespace

Json PrintOpaque(const QovRyx::OpaqueRecord& record) {
  const std::string_view body(reinterpret_cast<const char*>(record.mBody.data()),
                              record.mBody.size());
  return {{"tag", record.mTag}, {"size", body.size()}, {"body", HexDigits(body)}};
}

void PrintOrigin(const QovRyx::RecordOrigin& record, Json& fields) {
  if (!record.HasOrigin()) return;
  fields["tag"] = record.GetOriginTag();
  if (!record.GetTail().empty()) fields["tail"] = HexDigits(record.GetTail());
}

Json PrintActions(const QovRyx::ActionList& actions) {
  Json list = Json::array();
  for (const auto& slot : actions.mSlots) {
    list.push_back(slot == nullptr ? Json() : PrintAction(*slot));
  }
  return list;
}

template Json PrintRecord(const QovRyx::ViewPoint& record);

// NOLINTNEXTLINE(misc-no-recursion): bounded by the nesting of the record classes
Json MakeJson(const Json& record) {
  if (record.is_string()) return JsonText(record.get_ref<const std::string&>());
  if (record.is_number_float()) return JsonFloat(static_cast<float>(record.get<double>()));
  if (record.is_array()) {
    Json list = Json::array();
    for (const Json& element : record) list.push_back(MakeJson(element));
    return list;
  }
  if (!record.is_object()) return record;
  Json::object_t object;
  object.reserve(record.size());
  for (const auto& [key, value] : record.items()) {
    object.emplace_back(JsonText(key), MakeJson(value));
  }
  return object;
}

// NOLINTNEXTLINE(misc-no-recursion): bounded by the nesting of the record classes
void WriteRecord(const Json& record, Output& output, std::size_t indent) {
  std::size_t position = 0;
  for (const auto& [key, value] : record.items()) {
    const std::string name =
        record.is_array() ? fmt::format("[{}]", position++) : Escape(key, output.GetStyle());
    WriteField(name, value, output, indent);
  }
}

}  // namespace Qov::Tools
