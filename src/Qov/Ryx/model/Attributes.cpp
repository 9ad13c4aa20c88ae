#include "Qov/Ryx/Attributes.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "ModelFormat.h"
#include "Qov/Jbf/BlockIo.h"
#include "Qov/Util/Raise.h"

namespace QovUtil {
namespace {

constexpr const char* kSource = "include/Qov/Ryx/AttributesIo";
using QovRyx::AttributeType;
using QovRyx::kCountSize;
using QovRyx::kValueColumns;
constexpr std::size_t kNumColumns = QovRyx::kNumAttributeColumns;
using QovRyx::kNumAttributeTypes;
constexpr std::size_t kFirstValueColumn = 2;

constexpr std::size_t Index(AttributeType type) { return static_cast<std::size_t>(type); }

[[noreturn]] void RaiseMismatch(unsigned long line = __builtin_LINE()) {
  Qov::Util::Raise(kSource, Qov::Util::Exception::ErrorType::MismatchError,
                   "The columns of an attribute map disagree", line);
}

template <class T>
T Load(const char* at) {
  T value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

template <class T>
void Append(std::string& bytes, const T& value) {
  bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

void AppendText(std::string& bytes, std::string_view text) {
  Append(bytes, static_cast<std::uint32_t>(text.size()));
  bytes += text;
}

std::string_view TextAt(const char* at) { return {at + kCountSize, Load<std::uint32_t>(at)}; }

/// Returns the size in bytes of a value of that type.
std::size_t SizeAt(const char* at, AttributeType type) {
  return type == AttributeType::String ? kCountSize + TextAt(at).size()
                                       : QovRyx::GetValueSize(type);
}

std::string_view UpToZero(std::string_view text) { return text.substr(0, text.find('\0')); }

/// Returns the columns in `bytes`, all of which must be complete.
std::array<std::string_view, kNumColumns> SplitColumns(std::string_view bytes) {
  std::array<std::string_view, kNumColumns> columns;
  const char* at = bytes.data();
  for (std::size_t i = 0; i < kNumColumns; ++i) {
    const char* begin = at;
    const std::size_t count = Load<std::uint32_t>(at);
    at += kCountSize;
    const AttributeType type =
        i < kFirstValueColumn ? AttributeType::String : kValueColumns[i - kFirstValueColumn];
    if (i == 1) {
      at += count;
    } else if (type != AttributeType::String) {
      at += count * SizeAt(at, type);
    } else {
      for (std::size_t left = count; left > 0; --left) at += SizeAt(at, type);
    }
    columns[i] = {begin, static_cast<std::size_t>(at - begin)};
  }
  return columns;
}

void CheckColumns(const std::array<std::string_view, kNumColumns>& columns) {
  const auto count = [&columns](std::size_t i) { return Load<std::uint32_t>(columns[i].data()); };
  if (count(0) != count(1)) RaiseMismatch();
  std::array<std::uint32_t, kNumAttributeTypes> numOfType{};
  for (const char type : columns[1].substr(kCountSize)) {
    if (static_cast<unsigned char>(type) >= kNumAttributeTypes) RaiseMismatch();
    ++numOfType[static_cast<unsigned char>(type)];
  }
  for (std::size_t i = 0; i < kNumAttributeTypes; ++i) {
    if (count(kFirstValueColumn + i) != numOfType[Index(kValueColumns[i])]) {
      RaiseMismatch();
    }
  }
}

/// An entry of stored columns, whose texts end before a zero byte. It is small, because a map can
/// have millions.
struct StoredEntry {
  std::string_view GetName() const { return {mpName, mNameSize}; }
  /// Returns the bytes of a number or a text.
  std::string_view GetValue() const {
    if (mType == AttributeType::String) return UpToZero(TextAt(mpValue));
    return {mpValue, SizeAt(mpValue, mType)};
  }

  const char* mpName;
  const char* mpValue;  ///< Where the column holds the value; for a text, its length.
  std::uint32_t mNameSize;
  AttributeType mType;
};

std::string_view BytesOf(const std::string& text) { return text; }
template <class T>
std::string_view BytesOf(const T& number) {
  return {reinterpret_cast<const char*>(&number), sizeof number};
}

/// An entry of a map in memory.
struct MapEntry {
  explicit MapEntry(const AttributeMap::value_type& entry)
      : mpEntry(&entry), mType(static_cast<AttributeType>(entry.second.index())) {}

  std::string_view GetName() const { return mpEntry->first; }
  std::string_view GetValue() const {
    return std::visit([](const auto& held) { return BytesOf(held); }, mpEntry->second);
  }

  const AttributeMap::value_type* mpEntry;
  AttributeType mType;
};

/// Returns how many bytes an entry takes in the columns.
template <class Entry>
std::size_t GetStoredSize(const Entry& entry) {
  const std::size_t count = entry.mType == AttributeType::String ? kCountSize : 0;
  return kCountSize + entry.GetName().size() + 1 + count + entry.GetValue().size();
}

/// Encodes the columns of `entries`, which must be sorted by name.
template <class Entry>
std::string Encode(const std::vector<Entry>& entries) {
  std::size_t size = kNumColumns * kCountSize;
  for (const Entry& entry : entries) size += GetStoredSize(entry);
  std::string bytes;
  bytes.reserve(size);
  Append(bytes, static_cast<std::uint32_t>(entries.size()));
  for (const Entry& entry : entries) AppendText(bytes, entry.GetName());
  Append(bytes, static_cast<std::uint32_t>(entries.size()));
  for (const Entry& entry : entries) bytes += static_cast<char>(entry.mType);
  for (const AttributeType type : kValueColumns) {
    const auto isOfType = [type](const Entry& entry) { return entry.mType == type; };
    Append(bytes,
           static_cast<std::uint32_t>(std::count_if(entries.begin(), entries.end(), isOfType)));
    for (const Entry& entry : entries) {
      if (!isOfType(entry)) continue;
      if (type == AttributeType::String) {
        AppendText(bytes, entry.GetValue());
      } else {
        bytes += entry.GetValue();
      }
    }
  }
  return bytes;
}

/// Returns the text before its first zero byte. Counts the text if bytes are lost.
std::string_view DropAfterZero(std::string_view text) {
  const std::string_view kept = UpToZero(text);
  if (text.find_first_not_of('\0', kept.size()) != std::string_view::npos) {
    QovJbf::GetReadLosses().AddCutText(text);
  }
  return kept;
}

/// Keeps the first of adjacent entries with the same name and counts the others.
void DropEqualNames(std::vector<StoredEntry>& entries) {
  std::string_view last;
  bool isFirst = true;
  std::erase_if(entries, [&](const StoredEntry& entry) {
    const bool isEqual = !isFirst && entry.GetName() == last;
    if (isEqual) {
      QovJbf::GetReadLosses().AddEqualKey(std::string(entry.GetName()) + '\0' +
                                          std::string(entry.GetValue()));
    }
    last = entry.GetName();
    isFirst = false;
    return isEqual;
  });
}

std::string EncodeMap(const AttributeMap& map) {
  std::vector<MapEntry> entries;
  entries.reserve(map.size());
  for (const auto& entry : map) entries.emplace_back(entry);
  return Encode(entries);
}

}  // namespace

Attributes::Iterator& Attributes::Iterator::operator++() {
  const auto type = static_cast<AttributeType>(*mType++);
  const char*& value = mValues[Index(type)];
  mName += SizeAt(mName, AttributeType::String);
  value += SizeAt(value, type);
  --mLeft;
  return *this;
}

std::string_view Attributes::Iterator::GetName() const { return TextAt(mName); }

AttributeValue Attributes::Iterator::GetValue() const {
  const auto type = static_cast<AttributeType>(*mType);
  const char* at = mValues[Index(type)];
  switch (type) {
    case AttributeType::Unsigned:
      return Load<std::uint32_t>(at);
    case AttributeType::Float:
      return Load<float>(at);
    case AttributeType::Double:
      return Load<double>(at);
    case AttributeType::String:
      break;
  }
  return std::string(TextAt(at));
}

Attributes::Attributes(std::string columns) {
  if (Load<std::uint32_t>(columns.data()) == 0) return;
  columns.shrink_to_fit();
  mpColumns = std::make_shared<const std::string>(std::move(columns));
}

Attributes::Attributes(const AttributeMap& map) {
  if (!map.empty()) *this = Attributes(EncodeMap(map));
}

Attributes Attributes::FromColumns(std::string columns) {
  CheckColumns(SplitColumns(columns));
  Attributes stored(std::move(columns));
  if (stored.IsInOrder()) return stored;
  std::vector<StoredEntry> entries;
  entries.reserve(stored.size());
  for (Iterator it = stored.begin(); it != stored.end(); ++it) {
    const auto type = static_cast<AttributeType>(*it.mType);
    const char* value = it.mValues[Index(type)];
    if (type == AttributeType::String) DropAfterZero(TextAt(value));  // counts what is lost
    const std::string_view name = DropAfterZero(it.GetName());
    entries.push_back({name.data(), value, static_cast<std::uint32_t>(name.size()), type});
  }
  // The addresses of the names keep entries with equal names in stored order.
  std::sort(entries.begin(), entries.end(), [](const StoredEntry& a, const StoredEntry& b) {
    return std::pair(a.GetName(), a.mpName) < std::pair(b.GetName(), b.mpName);
  });
  DropEqualNames(entries);
  return Attributes(Encode(entries));
}

/// Returns true if the names ascend and no text holds a zero byte.
bool Attributes::IsInOrder() const {
  std::string_view last;
  for (Iterator it = begin(); it != end(); ++it) {
    const std::string_view name = it.GetName();
    const bool isFirst = it.mLeft == size();
    if (UpToZero(name).size() != name.size() || (!isFirst && name <= last)) return false;
    const auto type = static_cast<AttributeType>(*it.mType);
    const bool isText = type == AttributeType::String;
    if (isText && TextAt(it.mValues[Index(type)]).find('\0') != std::string_view::npos)
      return false;
    last = name;
  }
  return true;
}

Attributes::operator AttributeMap() const {
  AttributeMap map;
  for (Iterator it = begin(); it != end(); ++it) map.emplace_hint(map.end(), *it);
  return map;
}

std::size_t Attributes::size() const {
  return empty() ? 0 : Load<std::uint32_t>(mpColumns->data());
}

Attributes::Iterator Attributes::begin() const {
  Iterator it;
  if (empty()) return it;
  const auto columns = SplitColumns(*mpColumns);
  it.mLeft = Load<std::uint32_t>(columns[0].data());
  it.mName = columns[0].data() + kCountSize;
  it.mType = columns[1].data() + kCountSize;
  for (std::size_t i = 0; i < kNumAttributeTypes; ++i) {
    it.mValues[Index(kValueColumns[i])] = columns[kFirstValueColumn + i].data() + kCountSize;
  }
  return it;
}

void Attributes::Set(const std::string& name, AttributeValue value) {
  AttributeMap map = *this;
  map.insert_or_assign(name, std::move(value));
  *this = map;
}

void Attributes::erase(const std::string& name) {
  AttributeMap map = *this;
  map.erase(name);
  *this = map;
}

std::array<std::string_view, kNumColumns> Attributes::GetColumns() const {
  static const std::string kEmpty(kNumColumns * kCountSize, '\0');
  return SplitColumns(empty() ? kEmpty : *mpColumns);
}

std::size_t Attributes::GetStoredSize() const {
  return empty() ? kNumColumns * kCountSize : mpColumns->size();
}

void Attributes::ShareIfEqual(const Attributes& other) {
  if (*this == other) mpColumns = other.mpColumns;
}

bool operator==(const Attributes& a, const Attributes& b) {
  if (a.mpColumns == b.mpColumns) return true;
  return !a.empty() && !b.empty() && *a.mpColumns == *b.mpColumns;
}

}  // namespace QovUtil
