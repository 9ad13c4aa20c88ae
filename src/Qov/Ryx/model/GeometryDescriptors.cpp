#include <algorithm>

#include "Qov/Ryx/AttributesIo.h"
#include "Qov/Ryx/Geometry.h"
#include "Qov/Ryx/GeometryVersion.h"
#include "Qov/Util/Printable.h"
#include "Qov/Util/Raise.h"
#include "Remaining.h"

// The descriptors of a geometry in the light stream: i32 count, then for each variable
//   name: string
//   kind word: u32           kind | high byte << 24, or 0xFFFFFFFF for "no kind"
//   linked: bool
//   not linked:  size: u32   bytes of the values, the low 32 bits
//                width: u8
//                flag1: u8, flag2: u8, value1: u32, value2: u32, flag3: u8
//                offset: u64 in version "0.7", else u32
//                            version "0.5": the values follow in the heavy stream, plain
//   linked:      node: u32, variable: u32
//   flag: u8
//   attributes, in their own stream
// The older layout (any other version) has no links:
//   name, kind word, size, width, flag, attributes; the values follow in the heavy stream.

namespace QovRyx {
namespace {

constexpr const char* kSource = "include/Qov/Ryx/Geometry";
using Qov::Util::Raise;
using ErrorType = Qov::Util::Exception::ErrorType;

/// The layouts by what sets them apart.
enum class Layout { Older, InlineValues, NarrowOffsets, WideOffsets };

Layout GetLayout(const std::string& version) {
  if (version == kNewestGeometryVersion) return Layout::WideOffsets;
  if (version == "0.6") return Layout::NarrowOffsets;
  if (version == "0.5") return Layout::InlineValues;
  return Layout::Older;
}

class DescriptorWriter {
 public:
  DescriptorWriter(QovJbf::JbFile& file, const std::string& lightKey, const std::string& heavyKey,
                   const std::string& attributeKey)
      : mFile(file), mLightKey(lightKey), mHeavyKey(heavyKey), mAttributeKey(attributeKey) {}

  template <class T>
  void Field(const T& value) {
    mFile.GetIndex().Put(mLightKey, value);
  }
  void Kind(const Geometry::VarStruct& variable) {
    Field(variable.mKind == Geometry::kNoKind
              ? Geometry::kNoKind
              : variable.mKind | variable.mKindHighByte << kHighByteShift);
  }
  void Extent(const NumericArray& values) {
    Field(static_cast<std::uint32_t>(values.GetSize()));
    Field(values.GetWidth());
  }
  void Offset(const std::optional<std::uint64_t>& offset, bool wide) {
    if (!offset) Raise(kSource, ErrorType::ElementNotFound);
    if (wide) {
      Field(*offset);
    } else {
      Field(static_cast<std::uint32_t>(*offset));
    }
  }
  void Attributes(const QovUtil::Attributes& attributes) {
    QovUtil::WriteAttributesToJbf(mFile, mAttributeKey, attributes);
  }
  void InlineValues(const Geometry::VarStruct& variable) {
    std::vector<std::uint32_t> values;
    variable.mValues.GetValues(values);
    const std::uint64_t size = variable.mValues.GetSize();
    values.resize(size / sizeof(std::uint32_t) + 1);  // the reader passes over all bytes
    mFile.GetIndex().Put(mHeavyKey, values.data(), size);
  }

  static constexpr unsigned kHighByteShift = 24;

 private:
  QovJbf::JbFile& mFile;
  const std::string& mLightKey;
  const std::string& mHeavyKey;
  const std::string& mAttributeKey;
};

class DescriptorReader {
 public:
  DescriptorReader(QovJbf::JbFile& file, const std::string& lightKey,
                   const std::string& attributeKey, std::uint64_t& inlineOffset)
      : mFile(file),
        mLightKey(lightKey),
        mAttributeKey(attributeKey),
        mInlineOffset(inlineOffset) {}

  template <class T>
  void Field(T& value) {
    mFile.Require(mLightKey, value);
  }
  void Kind(Geometry::VarStruct& variable) {
    Field(variable.mKind);
    if (variable.mKind == Geometry::kNoKind) return;
    variable.mKindHighByte = variable.mKind >> DescriptorWriter::kHighByteShift;
    variable.mKind &= (1U << DescriptorWriter::kHighByteShift) - 1;
  }
  void Extent(NumericArray& values) {
    std::uint32_t size = 0;
    std::uint8_t width = 0;
    Field(size);
    Field(width);
    values = NumericArray(size, width, nullptr);
  }
  void Offset(std::optional<std::uint64_t>& offset, bool wide) {
    std::uint64_t value = 0;
    if (wide) {
      Field(value);
    } else {
      std::uint32_t narrow = 0;
      Field(narrow);
      value = narrow;
    }
    offset = value;
  }
  void Attributes(QovUtil::Attributes& attributes) {
    QovUtil::ReadAttributesFromJbf(mFile, mAttributeKey, attributes);
    attributes.ShareIfEqual(mLastAttributes);
    mLastAttributes = attributes;
  }
  /// Returns an upper bound for the number of variables in the rest of the block of the next
  /// variable.
  std::size_t CountRoom() {
    constexpr std::size_t kLeastSize = 14;  // of the older layout, with an empty name
    Remaining remaining;
    mFile.Require(mLightKey, remaining);
    return remaining.mNumBytes / kLeastSize + 1;
  }
  /// Notes where the values are and passes over them.
  void InlineValues(Geometry::VarStruct& variable) {
    variable.mOffset = mInlineOffset;
    mInlineOffset += variable.mValues.GetSize();
  }

 private:
  QovJbf::JbFile& mFile;
  const std::string& mLightKey;
  const std::string& mAttributeKey;
  QovUtil::Attributes mLastAttributes;  ///< Adjacent results with equal attributes share them.
  std::uint64_t& mInlineOffset;
};

/// The one list of a descriptor's fields, for the writer and the reader.
template <class Walker, class Variable>
void WalkDescriptor(Walker& walk, Variable& variable, Layout layout) {
  walk.Field(variable.mName);
  walk.Kind(variable);
  if (layout == Layout::Older) {
    walk.Extent(variable.mValues);
    walk.Field(variable.mFlag);
    walk.Attributes(variable.mAttributes);
    walk.InlineValues(variable);
    return;
  }
  walk.Field(variable.mLinked);
  if (variable.mLinked) {
    walk.Field(variable.mLink.mNode);
    walk.Field(variable.mLink.mVariable);
  } else {
    walk.Extent(variable.mValues);
    walk.Field(variable.mFlag1);
    walk.Field(variable.mFlag2);
    walk.Field(variable.mValue1);
    walk.Field(variable.mValue2);
    walk.Field(variable.mFlag3);
    walk.Offset(variable.mOffset, layout == Layout::WideOffsets);
    if (layout == Layout::InlineValues) walk.InlineValues(variable);
  }
  walk.Field(variable.mFlag);
  walk.Attributes(variable.mAttributes);
}

}  // namespace

void Geometry::WriteJb(QovJbf::JbFile& file, const std::string& lightKey,
                       const std::string& heavyKey, const std::string& attributeKey,
                       const std::string& version) {
  DescriptorWriter writer(file, lightKey, heavyKey, attributeKey);
  writer.Field(static_cast<std::int32_t>(mVariables.size()));
  const Layout layout = GetLayout(version);
  for (const VarStruct& variable : mVariables) WalkDescriptor(writer, variable, layout);
}

void Geometry::ReadJb(QovJbf::JbFile& file, const std::string& lightKey,
                      const std::string& attributeKey, const std::string& version,
                      std::uint64_t& inlineOffset) {
  if (IsNewerGeometryVersion(version)) {
    Raise(kSource, ErrorType::UnknownVersion,
          "Unknown Version: geometry " + Qov::Util::Quote(GetName()) + " has version " +
              Qov::Util::Quote(version) + ", the newest known is \"" + kNewestGeometryVersion +
              "\"");
  }
  DescriptorReader reader(file, lightKey, attributeKey, inlineOffset);
  std::int32_t count = 0;
  reader.Field(count);
  if (count < 0) {
    Raise(kSource, ErrorType::ModelError,
          "Geometry " + Qov::Util::Quote(GetName()) + " has a negative number of variables");
  }
  const Layout layout = GetLayout(version);
  mVariables.ReserveMore(std::min(static_cast<std::size_t>(count), reader.CountRoom()));
  for (std::int32_t i = 0; i < count; ++i) {
    VarStruct variable;
    WalkDescriptor(reader, variable, layout);
    mVariables.push_back(std::move(variable));
  }
}

}  // namespace QovRyx
