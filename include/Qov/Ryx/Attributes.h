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
#include <variant>

#include "Qov/Export.h"
#include "Qov/Util/AttributeValue.h"

namespace QovUtil {

/// The attributes of a node or result in their stored form: six columns, one after the other
/// (docs/format.md, "Attributes"). An empty map takes one pointer; any other map takes its stored
/// size and about 60 bytes. Copies share their columns. A change copies the columns and takes time
/// in proportion to their size, so collect many entries in an AttributeMap first.
class QOV_EXPORT Attributes {
  static constexpr std::size_t kNumTypes = std::variant_size_v<AttributeValue>;

 public:
  using value_type = std::pair<std::string, AttributeValue>;

  /// Visits the entries in the order of their names. Valid until the map that it came from is
  /// changed or destroyed.
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
    std::array<const char*, kNumTypes> mValues{};  ///< The next value of each type, by type index.
  };
  using iterator = Iterator;
  using const_iterator = Iterator;

  Attributes() = default;
  Attributes(const AttributeMap& map);  // NOLINT(google-explicit-constructor): same data
  Attributes(std::initializer_list<AttributeMap::value_type> entries)
      : Attributes(AttributeMap(entries)) {}
  /// Makes a map from stored columns. Sorts names, ends texts before a zero byte, and keeps the
  /// first of several entries with the same name; QovJbf::GetReadLosses counts the data that is
  /// lost. Raises MismatchError if the columns disagree in length or if a type index is unknown.
  static Attributes FromColumns(std::string columns);

  operator AttributeMap() const;  // NOLINT(google-explicit-constructor)

  bool empty() const { return mpColumns == nullptr; }
  std::size_t size() const;
  Iterator begin() const;
  Iterator end() const { return {}; }  // NOLINT(readability-convert-member-functions-to-static)

  /// Sets the attribute of that name, or adds it.
  void Set(const std::string& name, AttributeValue value);
  void erase(const std::string& name);
  /// The result of operator[], for `attributes["name"] = value`.
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

  /// Returns the columns in stored order: names, types, and the values of the type indexes 0, 1, 3,
  /// 2.
  std::array<std::string_view, 2 + kNumTypes> GetColumns() const;
  /// Returns the number of bytes that the map takes in a file.
  std::size_t GetStoredSize() const;
  /// Shares the columns of `other` if both maps are equal.
  void ShareIfEqual(const Attributes& other);

  /// Compares names, types and the bits of values.
  friend bool operator==(const Attributes& a, const Attributes& b);

 private:
  explicit Attributes(std::string columns);
  bool IsInOrder() const;

  std::shared_ptr<const std::string> mpColumns;  ///< Null for an empty map.
};

}  // namespace QovUtil
