#include "Qov/Ryx/Geometry.h"

#include <utility>

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
  return QovJbf::ryx_file_version == "0.6" ? "0.6" : "0.7";
}

void Geometry::RenameVariable(std::size_t position, std::string name) {
  mVariables[position].mName = std::move(name);
  if (mNumIndexed == 0) return;
  mPositions.clear();
  mNumIndexed = 0;
}

std::optional<std::size_t> Geometry::FindVariable(const std::string& name) {
  for (; mNumIndexed < mVariables.size(); ++mNumIndexed) {
    mPositions.emplace(mVariables[mNumIndexed].mName, mNumIndexed);
  }
  const auto found = mPositions.find(name);
  if (found == mPositions.end()) return std::nullopt;
  return found->second;
}

std::uint64_t Geometry::GetOrAddVariableIndex(const std::string& name) {
  if (const auto position = FindVariable(name)) return *position;
  VarStruct variable;
  variable.mName = name;
  AppendVariable(std::move(variable));
  return mVariables.size() - 1;
}

void Geometry::AttachValues(const std::shared_ptr<QovJbf::StreamReader>& reader, bool shuffled) {
  for (VarStruct& variable : mVariables) {
    if (variable.mLinked || !variable.mOffset) continue;
    const std::uint8_t width = variable.mValues.GetWidth();
    auto loader = std::make_shared<const DataLoader>(
        reader, *variable.mOffset, variable.mValues.GetNumElements(), shuffled ? width : 0);
    variable.mValues = NumericArray(variable.mValues.GetSize(), width, std::move(loader));
    variable.mOffset.reset();
  }
}

}  // namespace QovRyx
