#include "GeometryDescriptors.h"

#include <optional>
#include <vector>

#include "AttributesIo.h"
#include "Qov/Ryx/Geometry.h"
#include "Qov/Util/Raise.h"
#include "Remaining.h"

// The descriptors of a geometry in the light stream: i32 count, then for each result
//   name: string
//   kind word: u32           kind | high byte << 24, or 0xFFFFFFFF for "no kind"
//   linked: bool
//   not linked:  size: u32   bytes of the values, the low 32 bits
//                width: u8
//                flag1: u8, flag2: u8, value1: u32, value2: u32, flag3: u8
//                offset: u64 (WideOffsets) or u32 (NarrowOffsets, InlineValues)
//                            InlineValues: the values follow in the heavy stream, plain
//   linked:      node: u32, variable: u32
//   flag: u8
//   attributes, in their own stream
// GeometryLayout::Older has no links:
//   name, kind word, size, width, flag, attributes; the values follow in the heavy stream.

namespace QovRyx {
namespace {

constexpr const char* kSource = "include/Qov/Ryx/Geometry";

class DescriptorWriter {
 public:
  DescriptorWriter(const DescriptorStreams& streams, const std::string& heavyKey)
      : mStreams(streams), mHeavyKey(heavyKey) {}

  template <class T>
  void Field(const T& value) {
    mStreams.mrFile.GetIndex().Put(mStreams.mrLightKey, value);
  }
  void Kind(const Geometry::VarStruct& result) {
    Field(MakeKindWord(result.mKind, result.mKindHighByte));
  }
  void Extent(const NumericArray& values) {
    Field(static_cast<std::uint32_t>(values.GetSize()));
    Field(values.GetWidth());
  }
  void Offset(const std::optional<std::uint64_t>& offset, GeometryLayout layout) {
    if (!offset) {
      Qov::Util::RaiseElementNotFound(kSource);
    }
    if (layout == GeometryLayout::WideOffsets) {
      Field(*offset);
    } else {
      Field(static_cast<std::uint32_t>(*offset));
    }
  }
  void Link(const ResultLink& link) {
    Field(link.IsLinked());
    if (!link.IsLinked()) return;
    Field(link.GetPlace().mNode);
    Field(link.GetPlace().mPosition);
  }
  void Attributes(const Geometry::VarStruct& result) {
    QovUtil::WriteAttributesToJbf(mStreams.mrFile, mStreams.mrAttributeKey, result.mAttributes);
  }
  void InlineValues(const Geometry::VarStruct& result) {
    std::vector<std::uint32_t> values;
    result.mValues.GetValues(values);
    const std::uint64_t size = result.mValues.GetSize();
    // The reader skips all bytes, an incomplete last element included.
    values.resize(size / kElementSize + 1);
    mStreams.mrFile.GetIndex().Put(mHeavyKey, values.data(), size);
  }

 private:
  const DescriptorStreams& mStreams;
  const std::string& mHeavyKey;
};

class DescriptorReader {
 public:
  DescriptorReader(const DescriptorStreams& streams, std::uint64_t& inlineOffset,
                   QovUtil::Attributes& attributes)
      : mStreams(streams), mInlineOffset(inlineOffset), mAttributes(attributes) {}

  template <class T>
  void Field(T& value) {
    mStreams.mrFile.Require(mStreams.mrLightKey, value);
  }
  void Kind(Geometry::VarStruct& result) {
    std::uint32_t word = 0;
    Field(word);
    result.mKind = GetKind(word);
    result.mKindHighByte = GetKindHighByte(word);
  }
  void Extent(NumericArray& values) {
    std::uint32_t size = 0;
    std::uint8_t width = 0;
    Field(size);
    Field(width);
    values = NumericArray(size, width, nullptr);
  }
  void Offset(std::optional<std::uint64_t>& offset, GeometryLayout layout) {
    std::uint64_t wide = 0;
    std::uint32_t narrow = 0;
    if (layout == GeometryLayout::WideOffsets) {
      Field(wide);
    } else {
      Field(narrow);
    }
    offset = wide + narrow;
  }
  void Link(ResultLink& link) {
    bool isLinked = false;
    Field(isLinked);
    if (!isLinked) return;
    ResultPlace place;
    Field(place.mNode);
    Field(place.mPosition);
    link = ResultLink(place);
  }
  void Attributes(Geometry::VarStruct& /*result*/) {
    QovUtil::ReadAttributesFromJbf(mStreams.mrFile, mStreams.mrAttributeKey, mAttributes);
  }
  void InlineValues(Geometry::VarStruct& result) {
    result.mOffset = mInlineOffset;
    mInlineOffset += result.mValues.GetSize();
  }

 private:
  const DescriptorStreams& mStreams;
  std::uint64_t& mInlineOffset;
  QovUtil::Attributes& mAttributes;
};

/// Walks the fields of a descriptor, for the writer and the reader.
template <class Walker, class Variable>
void WalkDescriptor(Walker& walk, Variable& variable, GeometryLayout layout) {
  walk.Field(variable.mName);
  walk.Kind(variable);
  if (layout == GeometryLayout::Older) {
    walk.Extent(variable.mValues);
    walk.Field(variable.mFlag);
    walk.Attributes(variable);
    walk.InlineValues(variable);
    return;
  }
  walk.Link(variable.mLink);
  if (!variable.mLink.IsLinked()) {
    walk.Extent(variable.mValues);
    walk.Field(variable.mFlag1);
    walk.Field(variable.mFlag2);
    walk.Field(variable.mValue1);
    walk.Field(variable.mValue2);
    walk.Field(variable.mFlag3);
    walk.Offset(variable.mOffset, layout);
    if (layout == GeometryLayout::InlineValues) walk.InlineValues(variable);
  }
  walk.Field(variable.mFlag);
  walk.Attributes(variable);
}

}  // namespace

void WriteDescriptor(const DescriptorStreams& streams, const std::string& heavyKey,
                     GeometryLayout layout, const Geometry::VarStruct& result) {
  DescriptorWriter writer(streams, heavyKey);
  WalkDescriptor(writer, result, layout);
}

void ReadDescriptor(const DescriptorStreams& streams, GeometryLayout layout,
                    std::uint64_t& inlineOffset, Geometry::VarStruct& result,
                    QovUtil::Attributes& attributes) {
  DescriptorReader reader(streams, inlineOffset, attributes);
  WalkDescriptor(reader, result, layout);
}

std::size_t CountDescriptorRoom(const DescriptorStreams& streams) {
  Remaining remaining;
  streams.mrFile.Require(streams.mrLightKey, remaining);
  return remaining.mNumBytes / kLeastDescriptorSize + 1;
}

}  // namespace QovRyx
