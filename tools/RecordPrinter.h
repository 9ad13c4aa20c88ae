#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <type_traits>
#include <vector>

#include "Json.h"
#include "Output.h"
#include "Qov/Ryx/BlockVersionedIo.h"
#include "Qov/Ryx/Sequencer.h"
#include "Qov/Ryx/ViewPoint.h"

/// Walks the field lists of versioned records, like their writer and reader.
///
/// Returns a JSON object per record, with the fields in stream order. Its texts are the bytes of
/// the file, and numbers may be NaN. Only WriteRecord and MakeJson make it printable.
namespace Qov::Tools {

template <class T>
Json PrintValue(const T& value);

/// Collects the fields of a record.
class FieldPrinter {
 public:
  FieldPrinter& Rung(std::string_view /*rung*/) { return *this; }
  template <class T>
  FieldPrinter& Field(const char* name, const T& value) {
    mFields[name] = PrintValue(value);
    return *this;
  }
  Json TakeFields() { return std::move(mFields); }

 private:
  Json mFields = Json::object();
};

/// Returns the tag, the number of bytes and their hex digits.
Json PrintOpaque(const QovRyx::OpaqueRecord& record);
/// Adds the original tag and the unknown bytes of a record to its fields.
void PrintOrigin(const QovRyx::RecordOrigin& record, Json& fields);
/// Returns the actions with their types; null for an empty slot.
Json PrintActions(const QovRyx::ActionList& actions);

template <QovJbf::VersionedRecord T>
Json PrintRecord(const T& record) {
  if constexpr (QovJbf::OpaqueRecordType<T>) {
    return PrintOpaque(record);
  } else {
    FieldPrinter walk;
    T::Walk(record, walk);
    Json fields = walk.TakeFields();
    PrintOrigin(record, fields);
    return fields;
  }
}

namespace Detail {

template <class T>
concept TextKeyed = requires {
  typename T::mapped_type;
};
template <class T>
concept Listed = requires(const T& values) {
  values.begin();
};
template <class T>
concept Coloured = requires(const T& value) {
  value.mA;
};
template <class T>
concept Spatial = requires(const T& value) {
  value.mX;
};

/// Vectors of two, three and four components.
template <class T>
Json PrintComponents(const T& value) {
  Json list = Json::array({value.mX, value.mY});
  if constexpr (requires { value.mZ; }) list.push_back(value.mZ);
  if constexpr (requires { value.mW; }) list.push_back(value.mW);
  return list;
}

template <class T>
Json PrintMap(const T& entries) {
  Json::object_t object;  // appending without a lookup, because all keys differ
  object.reserve(entries.size());
  for (const auto& [key, value] : entries) object.emplace_back(key, PrintValue(value));
  return object;
}

template <class T>
Json PrintList(const T& values) {
  Json list = Json::array();
  for (const auto& value : values) list.push_back(PrintValue(value));
  return list;
}

}  // namespace Detail

template <class T>
Json PrintValue(const T& value) {
  if constexpr (QovJbf::VersionedRecord<T>) {
    return PrintRecord(value);
  } else if constexpr (std::is_same_v<T, QovRyx::ActionList>) {
    return PrintActions(value);
  } else if constexpr (std::is_arithmetic_v<T> || std::is_same_v<T, std::string>) {
    return value;
  } else if constexpr (Detail::Coloured<T>) {
    return Json::array({value.mR, value.mG, value.mB, value.mA});
  } else if constexpr (Detail::Spatial<T>) {
    return Detail::PrintComponents(value);
  } else if constexpr (Detail::TextKeyed<T>) {
    return Detail::PrintMap(value);
  } else {
    static_assert(Detail::Listed<T>);
    return Detail::PrintList(value);
  }
}

extern template Json PrintRecord(const QovRyx::ViewPoint& record);

/// Returns the record as part of a document.
Json MakeJson(const Json& record);
/// Writes the record as lines, with nested records indented. Shows 32-bit numbers that are
/// probably floats in both forms.
void WriteRecord(const Json& record, Output& output, std::size_t indent = 0);

}  // namespace Qov::Tools
