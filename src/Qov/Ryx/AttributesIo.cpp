#include "Qov/Ryx/AttributesIo.h"

#include <cstdint>
#include <utility>
#include <vector>

#include "Qov/Util/Raise.h"

// A stored map, in name order:
//   names: vector<string>
//   types: vector<u8>       position of the alternative in AttributeValue
//   u32s: vector<u32>, floats: vector<f32>, doubles: vector<f64>, strings: vector<string>
// Each value stands in the column of its type. Doubles come before strings here, though their
// type index is the higher one.

namespace QovUtil {
namespace {

constexpr const char* kSource = "include/Qov/Ryx/AttributesIo";

[[noreturn]] void RaiseMismatch(unsigned long line = __builtin_LINE()) {
  Qov::Util::Raise(kSource, Qov::Util::Exception::ErrorType::MismatchError,
                   "The columns of an attribute map disagree", line);
}

template <class T>
struct Column {
  std::vector<T> mValues;
  std::size_t mNumTaken = 0;

  T Take() {
    if (mNumTaken == mValues.size()) RaiseMismatch();
    return std::move(mValues[mNumTaken++]);
  }
  bool IsUsedUp() const { return mNumTaken == mValues.size(); }
};

struct Columns {
  Column<std::string> mNames;
  Column<std::uint8_t> mTypes;
  Column<std::uint32_t> mUnsigned;
  Column<float> mFloats;
  Column<double> mDoubles;
  Column<std::string> mStrings;

  /// In stored order.
  template <class Self, class Visitor>
  static void Visit(Self& self, Visitor visit) {
    visit(self.mNames.mValues);
    visit(self.mTypes.mValues);
    visit(self.mUnsigned.mValues);
    visit(self.mFloats.mValues);
    visit(self.mDoubles.mValues);
    visit(self.mStrings.mValues);
  }

  void Add(std::uint32_t value) { mUnsigned.mValues.push_back(value); }
  void Add(float value) { mFloats.mValues.push_back(value); }
  void Add(double value) { mDoubles.mValues.push_back(value); }
  void Add(const std::string& value) { mStrings.mValues.push_back(value); }

  AttributeValue Take(std::uint8_t type) {
    switch (type) {
      case 0:
        return mUnsigned.Take();
      case 1:
        return mFloats.Take();
      case 2:
        return mStrings.Take();
      case 3:
        return mDoubles.Take();
      default:
        RaiseMismatch();
    }
  }
  bool AreUsedUp() const {
    return mTypes.IsUsedUp() && mUnsigned.IsUsedUp() && mFloats.IsUsedUp() && mDoubles.IsUsedUp() &&
           mStrings.IsUsedUp();
  }
};

}  // namespace

void WriteAttributesToJbf(QovJbf::JbFile& file, const std::string& key,
                          const AttributeMap& attributes) {
  Columns columns;
  for (const auto& [name, value] : attributes) {
    columns.mNames.mValues.push_back(name);
    columns.mTypes.mValues.push_back(static_cast<std::uint8_t>(value.index()));
    std::visit([&columns](const auto& alternative) { columns.Add(alternative); }, value);
  }
  Columns::Visit(columns, [&](const auto& column) { file.GetIndex().Put(key, column); });
}

void ReadAttributesFromJbf(QovJbf::JbFile& file, const std::string& key, AttributeMap& attributes) {
  Columns columns;
  Columns::Visit(columns, [&](auto& column) { file.Require(key, column); });
  for (std::string& name : columns.mNames.mValues) {
    attributes.emplace(std::move(name), columns.Take(columns.mTypes.Take()));
  }
  if (!columns.AreUsedUp()) RaiseMismatch();
}

}  // namespace QovUtil
