#include "Qov/Ryx/Geometry.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <utility>

#include "GeometryDescriptors.h"
#include "HeavyPass.h"
#include "ModelFormat.h"
#include "Qov/Util/Raise.h"
#include "container/ContainerFormat.h"
#include "diagnostics/Printable.h"

namespace QovRyx {
namespace {

constexpr const char* kSource = "include/Qov/Ryx/Geometry";
using Qov::Util::Raise;
using ErrorType = Qov::Util::Exception::ErrorType;

}  // namespace

void Geometry::VarStruct::TakeValueFieldsOf(const VarStruct& other) {
  mKindHighByte = other.mKindHighByte;
  mFlag1 = other.mFlag1;
  mFlag2 = other.mFlag2;
  mValue1 = other.mValue1;
  mValue2 = other.mValue2;
  mFlag3 = other.mFlag3;
}

void Geometry::VarStruct::TakeValuesOf(const VarStruct& owner) {
  TakeValueFieldsOf(owner);
  mValues = owner.mValues;
  mLink = {};
}

std::string Geometry::GetVersion() const {
  return QovJbf::ryx_file_version == QovJbf::kLastVersionWithNarrowOffsets ? kNarrowOffsetsVersion
                                                                           : kNewestGeometryVersion;
}

void Geometry::RenameVariable(std::size_t position, std::string name) {
  mVariables[position].mName = std::move(name);
  mSlots.clear();
  mNumIndexed = 0;
}

void Geometry::RemoveVariables(const std::vector<bool>& isRemoved) {
  std::size_t numKept = 0;
  for (std::size_t i = 0; i != mVariables.size(); ++i) {
    if (i < isRemoved.size() && isRemoved[i]) continue;
    if (i != numKept) mVariables[numKept] = std::move(mVariables[i]);
    ++numKept;
  }
  mVariables.Truncate(numKept);
  mSlots.clear();
  mNumIndexed = 0;
}

/// Returns the slot of that name, or the free slot for it. At least one slot must be free.
std::uint32_t& Geometry::FindSlot(const std::string& name) {
  std::size_t slot = std::hash<std::string>()(name);
  while (true) {
    slot &= mSlots.size() - 1;
    const std::uint32_t position = mSlots[slot];
    if (position == 0 || mVariables[position - 1].mName == name) return mSlots[slot];
    ++slot;
  }
}

/// Makes room for the names of all results. At most half of the slots are used.
void Geometry::GrowIndex() {
  constexpr std::size_t kFewest = 16;
  mSlots.assign(std::bit_ceil(std::max(kFewest, 3 * mVariables.size())), 0);
  mNumIndexed = 0;
}

std::optional<std::size_t> Geometry::FindVariable(const std::string& name) {
  if (mSlots.size() < 2 * mVariables.size() + 1) GrowIndex();
  for (; mNumIndexed < mVariables.size(); ++mNumIndexed) {
    std::uint32_t& slot = FindSlot(mVariables[mNumIndexed].mName);
    if (slot == 0) slot = static_cast<std::uint32_t>(mNumIndexed + 1);
  }
  const std::uint32_t position = FindSlot(name);
  if (position == 0) return std::nullopt;
  return position - 1;
}

std::uint64_t Geometry::GetOrAddVariableIndex(const std::string& name) {
  if (const auto position = FindVariable(name)) return *position;
  VarStruct variable;
  variable.mName = name;
  AppendVariable(std::move(variable));
  return mVariables.size() - 1;
}

void Geometry::WriteJb(QovJbf::JbFile& file, const std::string& lightKey,
                       const std::string& heavyKey, const std::string& attributeKey,
                       const std::string& version) const {
  file.GetIndex().Put(lightKey, static_cast<std::int32_t>(mVariables.size()));
  const GeometryLayout layout = GetGeometryLayout(version);
  const DescriptorStreams streams{file, lightKey, attributeKey};
  for (const VarStruct& variable : mVariables) {
    WriteDescriptor(streams, heavyKey, layout, variable);
  }
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
  std::int32_t count = 0;
  file.Require(lightKey, count);
  if (count < 0) {
    Raise(kSource, ErrorType::ModelError,
          "Geometry " + Qov::Util::Quote(GetName()) + " has a negative number of variables");
  }
  const GeometryLayout layout = GetGeometryLayout(version);
  const DescriptorStreams streams{file, lightKey, attributeKey};
  mVariables.ReserveMore(
      std::min<std::size_t>(static_cast<std::size_t>(count), CountDescriptorRoom(streams)));
  for (std::int32_t i = 0; i < count; ++i) {
    VarStruct variable;
    QovUtil::Attributes attributes;
    ReadDescriptor(streams, layout, inlineOffset, variable, attributes);
    ProcessAttributes(variable, std::move(attributes));
    mVariables.push_back(std::move(variable));
  }
}

/// Gives a new result its attributes. Adjacent results with equal attributes share them.
void Geometry::ProcessAttributes(VarStruct& variable, QovUtil::Attributes attributes) const {
  if (!mVariables.empty()) attributes.ShareIfEqual(mVariables[mVariables.size() - 1].mAttributes);
  variable.mAttributes = std::move(attributes);
}

void Geometry::SaveBlocks(HeavyPass& pass, bool integerKinds) {
  for (std::size_t i = 0; i != mVariables.size(); ++i) {
    VarStruct& variable = mVariables[i];
    if (!variable.mLink.IsLinked() && variable.IsIntegerKind() == integerKinds)
      pass.SaveArray(variable);
  }
}

void Geometry::LoadBlocks(const std::shared_ptr<QovJbf::StreamReader>& reader, bool shuffled,
                          bool integerKinds) {
  for (std::size_t i = 0; i != mVariables.size(); ++i) {
    VarStruct& variable = mVariables[i];
    if (variable.mLink.IsLinked() || !variable.mOffset || variable.IsIntegerKind() != integerKinds)
      continue;
    const std::uint8_t width = variable.mValues.GetWidth();
    auto loader = std::make_shared<const DataLoader>(
        reader, *variable.mOffset, variable.mValues.GetNumElements(), shuffled ? width : 0);
    variable.mValues = NumericArray(variable.mValues.GetSize(), width, std::move(loader));
    variable.mOffset.reset();
  }
}

}  // namespace QovRyx
