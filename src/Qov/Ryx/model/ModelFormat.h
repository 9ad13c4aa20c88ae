#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

#include "GeometryVersion.h"
#include "Qov/Ryx/Geometry.h"
#include "Qov/Ryx/Group.h"
#include "Qov/Ryx/NodeSets.h"
#include "Qov/Ryx/Shape.h"
#include "Qov/Util/AttributeValue.h"
#include "container/ContainerFormat.h"

/// The facts of the model format (docs/format.md) that the reader, the writer and `ryx check`
/// share. The names of the streams are in StreamNames.h.
namespace QovRyx {

// Versions of node records. Nodes are written with the last version of each list; readers treat a
// version that is not in the list like the last one, except for geometries (GetGeometryLayout).

inline constexpr std::array<std::string_view, 5> kGroupVersions = {"0.0a", "0.1", "0.2", "0.3",
                                                                   Group::kVersion};
inline constexpr std::array<std::string_view, 3> kShapeVersions = {"0.0a", "0.1", Shape::kVersion};
inline constexpr std::array<std::string_view, 1> kNodeSetsVersions = {NodeSets::kVersion};
inline constexpr const char* kInlineValuesVersion = "0.5";
inline constexpr const char* kNarrowOffsetsVersion = "0.6";
inline constexpr auto kGeometryVersions =
    std::to_array<std::string_view>({"0.0a", "0.1", "0.2", "0.3", "0.4", kInlineValuesVersion,
                                     kNarrowOffsetsVersion, kNewestGeometryVersion});

/// Returns true if a group record of that version has a placement in "Light Data".
constexpr bool HasPlacement(std::string_view version) {
  return version != "0.0a" && version != "0.1";
}
/// Returns true if a group record of that version has attributes.
constexpr bool HasAttributes(std::string_view version) {
  return HasPlacement(version) && version != "0.2";
}
/// Returns true if a group record of that version has the flag of Group::TakesModels.
constexpr bool HasModelFlag(std::string_view version) {
  return HasAttributes(version) && version != "0.3";
}
/// Returns true if a shape record of that version has a material in "Resources".
constexpr bool HasMaterial(std::string_view version) {
  return version != "0.0a" && version != "0.1";
}

/// The layouts of geometry descriptors and values, by what each of them brought.
enum class GeometryLayout {
  Older,          ///< No links; values inline in the heavy stream, plain.
  InlineValues,   ///< Links and more fields; values inline, plain.
  NarrowOffsets,  ///< Shuffled values at a 32-bit offset.
  WideOffsets,    ///< Shuffled values at a 64-bit offset.
};

constexpr GeometryLayout GetGeometryLayout(std::string_view version) {
  if (version == kNewestGeometryVersion) return GeometryLayout::WideOffsets;
  if (version == kNarrowOffsetsVersion) return GeometryLayout::NarrowOffsets;
  if (version == kInlineValuesVersion) return GeometryLayout::InlineValues;
  return GeometryLayout::Older;
}

/// Returns true if values follow one another in the heavy stream, in the order of the tree, and are
/// not shuffled. Otherwise each array has an offset and is shuffled by its width.
constexpr bool HasInlineValues(GeometryLayout layout) {
  return layout == GeometryLayout::Older || layout == GeometryLayout::InlineValues;
}

// Sizes in bytes of encoded items. A string or vector begins with its count, a u32.

using QovJbf::kCountSize;
/// The least size of a tree record: six ids, three empty strings and a narrow light offset.
inline constexpr std::uint64_t kLeastTreeRecordSize = 6 * 4 + 3 * kCountSize + 4;
/// The placement of a group: translation, rotation and scale.
inline constexpr std::uint64_t kPlacementSize = (3 + 4 + 3) * sizeof(float);
/// The number of results of a geometry.
inline constexpr std::uint64_t kNumResultsSize = 4;
/// The least size of a descriptor: an empty name, the kind word, and the size, width and flag of
/// the older layout.
inline constexpr std::uint64_t kLeastDescriptorSize = kCountSize + 4 + 4 + 1 + 1;
/// The two flags, two values and the third flag of a descriptor.
inline constexpr std::uint64_t kCarriedFieldsSize = 2 * 1 + 2 * 4 + 1;
/// The light data of node sets after their first field, which holds this number.
inline constexpr std::uint32_t kNodeSetsFieldsSize = 4 + 8 + 4;
/// The light data of node sets.
inline constexpr std::uint64_t kNodeSetsLightSize = 4 + kNodeSetsFieldsSize;
/// The elements of the four pieces of node sets: name ends, names, value ends, values.
inline constexpr std::array<std::uint64_t, 4> kSetPieceElementSizes = {4, 1, 4, 4};
/// The least size of a view-point path: an empty name and the number of its views.
inline constexpr std::uint64_t kLeastPathSize = kCountSize + 4;

// The kind word of a descriptor: the kind in the low 24 bits, its high byte above.

inline constexpr unsigned kKindBits = 24;

constexpr std::uint32_t MakeKindWord(std::uint32_t kind, std::uint32_t highByte) {
  return kind == Geometry::kNoKind ? kind : kind | highByte << kKindBits;
}
constexpr std::uint32_t GetKind(std::uint32_t word) {
  return word == Geometry::kNoKind ? word : word & ((1U << kKindBits) - 1);
}
constexpr std::uint32_t GetKindHighByte(std::uint32_t word) {
  return word == Geometry::kNoKind ? 0 : word >> kKindBits;
}

// Attribute maps: columns of names and types, then one column of values for each type.

/// The type indexes: positions of the alternatives of QovUtil::AttributeValue.
enum class AttributeType : std::uint8_t { Unsigned, Float, String, Double };

inline constexpr std::size_t kNumAttributeTypes = 4;
inline constexpr std::size_t kNumAttributeColumns = 2 + kNumAttributeTypes;
/// The columns of values in stored order. Doubles come before strings.
inline constexpr std::array<AttributeType, kNumAttributeTypes> kValueColumns = {
    AttributeType::Unsigned, AttributeType::Float, AttributeType::Double, AttributeType::String};

/// Returns the size of a value in bytes, or 0 for a string.
constexpr std::uint64_t GetValueSize(AttributeType type) {
  switch (type) {
    case AttributeType::Unsigned:
      return sizeof(std::uint32_t);
    case AttributeType::Float:
      return sizeof(float);
    case AttributeType::String:
      return 0;
    case AttributeType::Double:
      return sizeof(double);
  }
  return 0;
}

namespace Detail {

template <AttributeType kType, class T>
inline constexpr bool kIsAlternative = std::is_same_v<
    std::variant_alternative_t<static_cast<std::size_t>(kType), QovUtil::AttributeValue>, T>;

static_assert(std::variant_size_v<QovUtil::AttributeValue> == kNumAttributeTypes,
              "a new type of attributes needs an AttributeType and a column in kValueColumns");
static_assert(kIsAlternative<AttributeType::Unsigned, std::uint32_t> &&
              kIsAlternative<AttributeType::Float, float> &&
              kIsAlternative<AttributeType::String, std::string> &&
              kIsAlternative<AttributeType::Double, double>);

}  // namespace Detail

// Limits that keep a small file from taking any amount of memory or time.

/// Several arrays may have the same bytes of "Heavy Data", and so may several node sets. All arrays
/// together, or all node sets, may be this many times as long as the stream. Writers rarely share.
inline constexpr std::uint64_t kMostShares = 64;
/// Reading arrays that are not in the order of their offsets decompresses bytes only to skip them.
/// The limit for such bytes is this many times the length of "Heavy Data", plus the allowance.
inline constexpr std::uint64_t kMostTimesSkipped = 16;
inline constexpr std::uint64_t kSkippedAllowance = std::uint64_t{1} << 30;  ///< Bytes (1 GiB).

}  // namespace QovRyx
