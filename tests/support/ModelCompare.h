#pragma once

#include <cstdint>
#include <functional>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Qov/Ryx/Tree.h"
#include "support/ModelBuilder.h"

/// Models as text, for EXPECT_EQ(DescribeModel(a), DescribeModel(b)): GoogleTest then shows the
/// lines that differ. Two texts are equal if all nodes, arrays and views are equal. The history is
/// left out, because it contains times.
namespace Qov::Test {

inline std::size_t HashBytes(const void* bytes, std::size_t size) {
  return std::hash<std::string_view>()({static_cast<const char*>(bytes), size});
}

inline void Describe(std::ostream& out, const QovUtil::Attributes& attributes) {
  for (const auto& [name, value] : attributes) {
    out << "  @" << name << " " << value.index() << ":";
    std::visit([&out](const auto& held) { out << held; }, value);
  }
}

inline void Describe(std::ostream& out, const QovRyx::NumericArray& array) {
  std::vector<std::uint32_t> values;
  array.GetValues(values);
  out << values.size() << " x" << int{array.GetWidth()} << " #" << std::hex
      << HashBytes(values.data(), values.size() * sizeof(values[0])) << std::dec;
}

inline void Describe(std::ostream& out, const QovRyx::Geometry::VarStruct& variable) {
  out << "    " << Unbarred(variable.mName) << ": kind " << variable.mKind << "/"
      << variable.mKindHighByte << " flags " << int{variable.mFlag} << int{variable.mFlag1}
      << int{variable.mFlag2} << int{variable.mFlag3} << " values " << variable.mValue1 << ","
      << variable.mValue2 << " ";
  const QovRyx::ResultPlace& place = variable.mLink.GetPlace();
  if (variable.mLink.IsLinked()) out << "-> " << place.mNode << "," << place.mPosition;
  out << " ";
  Describe(out, variable.mValues);
  Describe(out, variable.mAttributes);
  out << "\n";
}

/// Describes a variable without its name, kind, flag and attributes, which a link does not share.
inline std::string DescribeValues(QovRyx::Geometry::VarStruct variable) {
  variable.mName.clear();
  variable.mKind = 0;
  variable.mFlag = 0;
  variable.mAttributes = {};
  std::ostringstream out;
  Describe(out, variable);
  return out.str();
}

/// Describes a record by the bytes that are written for it.
template <class Record>
void DescribeRecord(std::ostream& out, const Record& record) {
  QovJbf::Block block;
  QovJbf::CopyToBlock_Versioned(block, record);
  out << block.GetSize() << " bytes #" << std::hex << HashBytes(block.GetData(), block.GetSize())
      << std::dec << "\n";
}

inline void Describe(std::ostream& out, const QovRyx::NodeSets& sets) {
  for (const QovRyx::NodeSets::Set& set : sets.GetSets()) {
    out << "    " << set.mName << ":";
    for (const std::uint32_t value : set.mValues) out << " " << value;
    out << "\n";
  }
}

inline void DescribePayload(std::ostream& out, const QovRyx::Node& node) {
  if (const auto* group = dynamic_cast<const QovRyx::Group*>(&node)) {
    for (const float value : group->mTranslation) out << " " << value;
    for (const float value : group->mRotation) out << " " << value;
    for (const float value : group->mScale) out << " " << value;
    out << " takes models " << int{group->mTakesModels};
    Describe(out, group->mAttributes);
    out << "\n";
  } else if (const auto* shape = dynamic_cast<const QovRyx::Shape*>(&node)) {
    out << " material ";
    DescribeRecord(out, shape->mMaterial.mValues);
  } else if (const auto* geometry = dynamic_cast<const QovRyx::Geometry*>(&node)) {
    out << "\n";
    for (const auto& variable : geometry->GetVariables()) Describe(out, variable);
  } else if (const auto* sets = dynamic_cast<const QovRyx::NodeSets*>(&node)) {
    Describe(out, sets->mAttributes);
    out << "\n";
    Describe(out, *sets);
  } else {
    out << "\n";
  }
}

inline void Describe(std::ostream& out, const QovRyx::NodeTree::Node& entry) {
  out << entry.mId << ": parent " << entry.mParent << " siblings " << entry.mPreviousSibling << ","
      << entry.mNextSibling << " children " << entry.mFirstChild << "," << entry.mLastChild;
  if (!entry.mData) {
    out << " nothing\n";
    return;
  }
  out << " " << entry.mData->GetType() << " \"" << entry.mData->GetName() << "\"";
  DescribePayload(out, *entry.mData);
}

inline std::string DescribeModel(const QovRyx::Tree& tree) {
  std::ostringstream out;
  out.precision(17);
  for (const auto& [id, entry] : tree.GetNodes()) Describe(out, entry);
  if (!tree.HasViewPoints()) return out.str();
  out << "view point ";
  DescribeRecord(out, tree.GetViewPoint());
  for (const QovRyx::ViewPointPath& path : tree.GetViewPointPaths()) {
    out << "path " << path.mName << "\n";
    for (const QovRyx::ViewPoint& viewPoint : path.mViewPoints) DescribeRecord(out, viewPoint);
  }
  out << "sequencer ";
  DescribeRecord(out, tree.GetSequencerData());
  return out.str();
}

/// Describes the model in a file.
inline std::string DescribeModel(const std::string& path) {
  QovRyx::Tree tree(false);
  LoadTree(tree, path);
  return DescribeModel(tree);
}

}  // namespace Qov::Test
