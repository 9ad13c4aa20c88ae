#include "check/Attributes.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

#include "check/StreamEnd.h"
#include "model/StreamNames.h"

// A map: names, types, then the values by type, in the columns u32, f32, f64 and string.

namespace Qov::Tools {
namespace {

using QovRyx::AttributeType;
constexpr std::size_t kNumTypes = QovRyx::kNumAttributeTypes;

/// The names of one map in stored order. They lie in one text, because a map can have millions.
class AttributeNames {
 public:
  explicit AttributeNames(std::uint32_t count) { mEnds.reserve(count); }

  void Add(std::string_view name) {
    mIsAscending = mIsAscending && (mEnds.empty() || (*this)[mEnds.size() - 1] < name);
    mText += name;
    mEnds.push_back(mText.size());
  }
  std::size_t GetSize() const { return mEnds.size(); }
  bool IsAscending() const { return mIsAscending; }
  std::string_view operator[](std::size_t i) const {
    const std::uint64_t start = i == 0 ? 0 : mEnds[i - 1];
    return std::string_view(mText).substr(start, mEnds[i] - start);
  }
  std::vector<std::uint32_t> FindRepeated() const;

 private:
  std::string mText;
  std::vector<std::uint64_t> mEnds;  ///< Where each name ends in mText.
  bool mIsAscending = true;
};

/// Returns the ascending positions of the names that are equal to an earlier one.
std::vector<std::uint32_t> AttributeNames::FindRepeated() const {
  std::vector<std::uint32_t> positions(mEnds.size());
  std::iota(positions.begin(), positions.end(), 0U);
  std::sort(positions.begin(), positions.end(), [this](std::uint32_t a, std::uint32_t b) {
    const int order = (*this)[a].compare((*this)[b]);
    return order == 0 ? a < b : order < 0;
  });
  std::string_view last;
  bool isFirst = true;
  std::erase_if(positions, [&](std::uint32_t i) {
    const bool isRepeated = !isFirst && (*this)[i] == last;
    isFirst = false;
    last = (*this)[i];
    return !isRepeated;
  });
  std::sort(positions.begin(), positions.end());
  return positions;
}

class AttributeReader {
 public:
  AttributeReader(StreamCursor& cursor, Findings& findings)
      : mCursor(cursor), mFindings(findings) {}

  /// Reads one map. `place` is the node or result that it belongs to.
  void Read(const Place& place);

 private:
  std::uint32_t TakeNames(const Place& place);
  void ReportNames(const AttributeNames& names, const Place& place);
  std::array<std::uint64_t, kNumTypes> TakeTypes(std::uint32_t numNames, const Place& place);
  std::uint64_t PassOverColumn(AttributeType type, const Place& place);

  StreamCursor& mCursor;
  Findings& mFindings;
};

void AttributeReader::Read(const Place& place) {
  const auto counts = TakeTypes(TakeNames(place), place);
  for (const AttributeType column : QovRyx::kValueColumns) {
    const auto type = static_cast<std::size_t>(column);
    const std::uint64_t held = PassOverColumn(column, place);
    if (held == counts[type]) continue;
    mFindings.Error(
        "attribute-columns", place,
        fmt::format("{} values have type {}, but their column has {}.", counts[type], type, held));
  }
}

std::uint32_t AttributeReader::TakeNames(const Place& place) {
  const std::uint32_t count = mCursor.TakeCount(QovRyx::kCountSize);
  AttributeNames names(count);
  try {
    for (std::uint32_t i = 0; i < count; ++i) names.Add(mCursor.TakeText(mFindings, place));
  } catch (const StreamCursor::EndReached&) {
    ReportNames(names, place);
    throw;
  }
  ReportNames(names, place);
  return count;
}

void AttributeReader::ReportNames(const AttributeNames& names, const Place& place) {
  if (names.IsAscending()) return;
  const std::vector<std::uint32_t> repeated = names.FindRepeated();
  auto nextRepeated = repeated.begin();
  std::size_t greatest = 0;  // of the names so far
  for (std::size_t i = 0; i < names.GetSize(); ++i) {
    if (nextRepeated != repeated.end() && *nextRepeated == i) {
      ++nextRepeated;
      mFindings.Error(
          "attribute-name", place,
          fmt::format("There are two attributes {}; readers keep the first.", Quoted(names[i])));
    } else if (names[i] < names[greatest]) {
      mFindings.Warning("attribute-name", place,
                        fmt::format("Attribute {} comes after {}, out of order.", Quoted(names[i]),
                                    Quoted(names[greatest])));
    } else {
      greatest = i;
    }
  }
}

std::array<std::uint64_t, kNumTypes> AttributeReader::TakeTypes(std::uint32_t numNames,
                                                                const Place& place) {
  std::array<std::uint64_t, kNumTypes> counts{};
  const std::uint32_t numTypes = mCursor.TakeCount(1);
  for (std::uint32_t i = 0; i < numTypes; ++i) {
    const auto type = mCursor.Take<std::uint8_t>();
    if (type < kNumTypes) {
      ++counts[type];
    } else {
      mFindings.Error("attribute-type", place,
                      fmt::format("Attribute {} has the unknown type {}.", i, type));
    }
  }
  if (numTypes != numNames) {
    mFindings.Error("attribute-columns", place,
                    fmt::format("The map has {} names but {} types.", numNames, numTypes));
  }
  return counts;
}

std::uint64_t AttributeReader::PassOverColumn(AttributeType type, const Place& place) {
  if (type != AttributeType::String) {
    const std::uint64_t size = QovRyx::GetValueSize(type);
    const std::uint32_t count = mCursor.TakeCount(size);
    mCursor.PassOver(count * size);
    return count;
  }
  const std::uint32_t count = mCursor.TakeCount(QovRyx::kCountSize);
  for (std::uint32_t i = 0; i < count; ++i) mCursor.TakeText(mFindings, place);
  return count;
}

/// Reads the maps of all nodes. Returns false if the number of a node's maps is unknown.
bool ReadMaps(const ModelContent& model, StreamCursor& cursor, Findings& findings) {
  AttributeReader reader(cursor, findings);
  const auto here = [&] { return Place::InStream(cursor.GetName(), cursor.GetPosition()); };
  for (const StoredNode& node : model.mNodes) {
    if (!node.mHasLightData) {
      findings.Warning(
          "unchecked", node.At(here()),
          "The number of attribute maps of this node is unknown, so that the maps from here "
          "on cannot be checked.");
      return false;
    }
    const bool isGroup = node.GetType() == NodeType::Group;
    try {
      if (isGroup && QovRyx::HasAttributes(node.mVersion)) reader.Read(node.At(here()));
      for (std::size_t i = 0; i < node.mVariables.size(); ++i) reader.Read(node.At(here(), i));
    } catch (const StreamCursor::EndReached&) {
      ReportEnd(cursor, node.At({}), "the attributes", findings);
      return false;
    }
  }
  return model.mIsComplete;
}

}  // namespace

void CheckAttributes(Container& container, const ModelContent& model, Findings& findings) {
  StreamCursor cursor = container.OpenStream(QovRyx::kAttributes);
  if (!ReadMaps(model, cursor, findings)) return;
  ReportRest(cursor, model, "map that belongs to a node", findings);
}

}  // namespace Qov::Tools
