#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "Qov/Export.h"
#include "Qov/Util/AttributeValue.h"

namespace QovUtil {

/// The attributes of a node or result, held as they are stored: six columns, one after the other
/// (docs/format.md, "Attributes"). An empty map takes a pointer, any other one its stored size and
/// about 60 bytes. Copies share their columns; a change makes a copy of its own and costs time in
/// proportion to the size, so that many entries are better put into an AttributeMap first.
class QOV_EXPORT Attributes {
 public:
  using value_type = std::pair<std::string, AttributeValue>;

  /// Visits the entries in the order of their names. Valid as long as no copy of the map that it
  /// came from is changed or destroyed.
  class QOV_EXPORT Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = Attributes::value_type;
    using difference_type = std::ptrdiff_t;
    using pointer = const value_type*;
    using reference = value_type;

    Iterator() = default;
    value_type operator*() const { return {std::string(GetName()), GetValue()}; }
    Iterator& operator++();
    friend bool operator==(const Iterator& a, const Iterator& b) { return a.mLeft == b.mLeft; }

    std::string_view GetName() const;
    AttributeValue GetValue() const;

   private:
    friend class Attributes;
    std::uint32_t mLeft = 0;  ///< Entries from here to the end.
    const char* mName = nullptr;
    const char* mType = nullptr;
    std::array<const char*, 4> mValues{};  ///< The next value of each type, by type index.
  };
  using iterator = Iterator;
  using const_iterator = Iterator;

  Attributes() = default;
  Attributes(const AttributeMap& map);  // NOLINT(google-explicit-constructor): another form of it
  Attributes(std::initializer_list<AttributeMap::value_type> entries)
      : Attributes(AttributeMap(entries)) {}
  /// Makes a map of stored columns. Names are sorted, texts end before a zero byte, and
  /// of entries of the same name the first one is kept; QovJbf::GetReadLosses counts what is lost.
  /// Raises MismatchError if the columns disagree in length or a type index is unknown.
  static Attributes FromColumns(std::string columns);

  operator AttributeMap() const;  // NOLINT(google-explicit-constructor)

  bool empty() const { return mpColumns == nullptr; }
  std::size_t size() const;
  Iterator begin() const;
  Iterator end() const { return {}; }  // NOLINT(readability-convert-member-functions-to-static)

  /// Sets the attribute of that name, which need not be there.
  void Set(const std::string& name, AttributeValue value);
  void erase(const std::string& name);
  /// For `attributes["name"] = value`.
  class Slot {
   public:
    Slot(Attributes& attributes, std::string name)
        : mAttributes(attributes), mName(std::move(name)) {}
    void operator=(AttributeValue value) && { mAttributes.Set(mName, std::move(value)); }

   private:
    Attributes& mAttributes;
    std::string mName;
  };
  Slot operator[](const std::string& name) { return {*this, name}; }

  /// The columns in stored order: names, types, and the values of the type indexes 0, 1, 3, 2.
  std::array<std::string_view, 6> GetColumns() const;
  /// The bytes that the map takes in a file.
  std::size_t GetStoredSize() const;
  /// Shares the columns of `other` from now on if they are equal.
  void ShareIfEqual(const Attributes& other);

  /// Compares names, types and the bits of values.
  friend bool operator==(const Attributes& a, const Attributes& b);

 private:
  explicit Attributes(std::string columns);
  bool IsInOrder() const;

  std::shared_ptr<const std::string> mpColumns;  ///< Null for an empty map.
};

}  // namespace QovUtil
