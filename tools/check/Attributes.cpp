#include <fmt/format.h>

#include <array>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "Qov/Ryx/StreamNames.h"
#include "check/LightStage.h"
#include "check/TreeStage.h"

// A map: names, types, then the values by type, in the columns u32, f32, f64 and string.

namespace Qov::Tools {
namespace {

constexpr std::size_t kNumTypes = 4;
/// Of the values in the columns, in their order.
constexpr std::array<std::uint64_t, 3> kPlainSizes = {4, 4, 8};
/// The types whose values the columns hold.
constexpr std::array<std::size_t, kNumTypes> kColumnTypes = {0, 1, 3, 2};

class AttributeReader {
 public:
  AttributeReader(StreamCursor& cursor, Findings& findings)
      : mCursor(cursor), mFindings(findings) {}

  /// One map; `place` names what it belongs to.
  void Read(const Place& place);

 private:
  std::uint32_t TakeNames(const Place& place);
  std::array<std::uint64_t, kNumTypes> TakeTypes(std::uint32_t numNames, const Place& place);
  std::uint64_t PassOverColumn(std::size_t column, const Place& place);

  StreamCursor& mCursor;
  Findings& mFindings;
};

void AttributeReader::Read(const Place& place) {
  const auto counts = TakeTypes(TakeNames(place), place);
  for (std::size_t column = 0; column < kColumnTypes.size(); ++column) {
    const std::size_t type = kColumnTypes[column];
    const std::uint64_t held = PassOverColumn(column, place);
    if (held == counts[type]) continue;
    mFindings.Error("attribute-columns", place,
                    fmt::format("{} values are of type {}, but their column holds {}.",
                                counts[type], type, held));
  }
}

std::uint32_t AttributeReader::TakeNames(const Place& place) {
  const std::uint32_t count = mCursor.TakeCount(4);
  std::set<std::string> seen;
  for (std::uint32_t i = 0; i < count; ++i) {
    const auto [name, isNew] = seen.insert(mCursor.TakeText(mFindings, place));
    if (!isNew) {
      mFindings.Error(
          "attribute-name", place,
          fmt::format("There are two attributes {}; readers keep the first.", Quoted(*name)));
    } else if (std::next(name) != seen.end()) {
      mFindings.Warning("attribute-name", place,
                        fmt::format("Attribute {} comes after {}, out of order.", Quoted(*name),
                                    Quoted(*seen.rbegin())));
    }
  }
  return count;
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
                      fmt::format("Attribute {} is of type {}, which is not known.", i, type));
    }
  }
  if (numTypes != numNames) {
    mFindings.Error("attribute-columns", place,
                    fmt::format("There are {} names but {} types.", numNames, numTypes));
  }
  return counts;
}

std::uint64_t AttributeReader::PassOverColumn(std::size_t column, const Place& place) {
  if (column < kPlainSizes.size()) {
    const std::uint32_t count = mCursor.TakeCount(kPlainSizes[column]);
    mCursor.PassOver(count * kPlainSizes[column]);
    return count;
  }
  const std::uint32_t count = mCursor.TakeCount(4);
  for (std::uint32_t i = 0; i < count; ++i) mCursor.TakeText(mFindings, place);
  return count;
}

/// Reads the maps of all nodes; false where the number of a node's maps is not known.
bool ReadMaps(const ModelContent& model, StreamCursor& cursor, Findings& findings) {
  AttributeReader reader(cursor, findings);
  const auto here = [&] { return Place::InStream(cursor.GetName(), cursor.GetPosition()); };
  for (const StoredNode& node : model.mNodes) {
    if (!node.mHasLightData) {
      findings.Warning("unchecked", node.At(here()),
                       "How many attribute maps this node has is not known: from here on they "
                       "cannot be checked.");
      return false;
    }
    const bool isGroup = node.GetType() == NodeType::Group;
    try {
      if (isGroup && !node.IsOldest() && node.mVersion != "0.2") reader.Read(node.At(here()));
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
