#include "Qov/Ryx/Geometry.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <utility>

#include "container/ContainerFormat.h"

namespace QovRyx {

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
  mLinked = false;
  mLink = {};
  mLeadsNowhere = false;
}

std::string Geometry::GetVersion() const {
  return QovJbf::ryx_file_version == QovJbf::kLastVersionWithNarrowOffsets ? "0.6" : "0.7";
}

void Geometry::RenameVariable(std::size_t position, std::string name) {
  mVariables[position].mName = std::move(name);
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

/// Makes room for the names of all variables. At most half of the slots are used.
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

void Geometry::AttachValues(const std::shared_ptr<QovJbf::StreamReader>& reader, bool shuffled) {
  for (std::size_t i = 0; i != mVariables.size(); ++i) {
    VarStruct& variable = mVariables[i];
    if (variable.mLinked || !variable.mOffset) continue;
    const std::uint8_t width = variable.mValues.GetWidth();
    auto loader = std::make_shared<const DataLoader>(
        reader, *variable.mOffset, variable.mValues.GetNumElements(), shuffled ? width : 0);
    variable.mValues = NumericArray(variable.mValues.GetSize(), width, std::move(loader));
    variable.mOffset.reset();
  }
}

}  // namespace QovRyx
