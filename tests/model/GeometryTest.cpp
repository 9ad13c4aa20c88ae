#include "Qov/Ryx/Geometry.h"

#include <gtest/gtest.h>

#include "Qov/Ryx/ValueOwners.h"
#include "support/Errors.h"
#include "support/ModelBuilder.h"
#include "support/Streams.h"
#include "support/TempDir.h"

namespace {

using namespace Qov::Test;
using QovRyx::Geometry;
using QovRyx::NumericArray;

TEST(Geometry, FindsTheFirstVariableOfAName) {
  Geometry geometry("g");
  for (const char* name : {"a", "b", "a"}) geometry.AppendVariable(MakeVariable(name, 12, {}));
  EXPECT_EQ(geometry.GetOrAddVariableIndex("a"), 0U);
  geometry.RenameVariable(0, "b");
  EXPECT_EQ(geometry.GetOrAddVariableIndex("a"), 2U);
  EXPECT_EQ(geometry.GetOrAddVariableIndex("b"), 0U);
  EXPECT_EQ(geometry.GetOrAddVariableIndex("new"), 3U);
  EXPECT_EQ(geometry.GetVariables()[3].mKind, Geometry::kNoKind);
  EXPECT_EQ(geometry.GetOrAddVariableIndex("new"), 3U);
}

TEST(Geometry, DistinguishesIntegersFromFloats) {
  QovRyx::Tree tree(false);
  Geometry& geometry = AddNode<Geometry>(tree, 1, "g");
  const std::vector<std::pair<std::uint32_t, std::uint32_t>> kinds = {
      {0, 0}, {4, 0}, {5, 0}, {6, 0}, {7, 0}, {9, 0}, {40, 5}, {40, 4}, {Geometry::kNoKind, 0}};
  for (const auto& [kind, highByte] : kinds) {
    auto variable = MakeVariable("V", kind, NumericArray::Of(Ramp(3, 1.0F)));
    variable.mKindHighByte = highByte;
    geometry.AppendVariable(variable);
    geometry.AppendVariable(
        MakeLinked("L", {2, static_cast<std::uint32_t>(geometry.GetVariables().size()) - 1}));
  }
  const TempDir folder;
  SaveTree(tree, folder / "model.ryx");
  QovRyx::Tree loaded(false);
  LoadTree(loaded, folder / "model.ryx");
  const QovRyx::ValueOwners owners(loaded.GetNodes());
  std::string found;
  for (const auto& variable : QovRyx::AsGeometry(loaded.GetNodes().GetReqNode(2))->GetVariables()) {
    found += owners.HoldUnsigned(variable) ? 'i' : 'f';
  }
  EXPECT_EQ(found, "ffiiiiiiffiiiiffff");
}

TEST(Geometry, WritesDescriptors) {
  Geometry geometry("g");
  auto stored = MakeVariable("S", 0x28, NumericArray::Of(Ramp(3, 1.0F), 3));
  stored.mKindHighByte = 5;
  stored.mFlag1 = 2;
  stored.mFlag2 = 3;
  stored.mValue1 = 4;
  stored.mValue2 = 5;
  stored.mFlag3 = 6;
  stored.mFlag = 7;
  stored.mOffset = 0x1122334455;
  auto linked = MakeLinked("L", {5, 1});
  linked.mKindHighByte = 9;  // not stored, because there is no kind
  geometry.AppendVariable(stored);
  geometry.AppendVariable(linked);

  QovJbf::JbFile file;
  geometry.WriteJb(file, "Light Data", "Heavy Data", "Attributes", geometry.GetVersion());
  EXPECT_EQ(StreamBytes(file, "Light Data"),
            "02000000"
            "0100000053"        // S
            "28000005"          // kind and its high byte
            "00"                // not linked
            "0c00000003"        // size, width
            "0203"              // flags
            "0400000005000000"  // values
            "06"                // flag
            "5544332211000000"  // offset
            "07"                // flag
            "010000004c"        // L
            "ffffffff"          // no kind
            "01"                // linked
            "0500000001000000"  // to the second variable of node 5
            "00");
}

TEST(Geometry, PadsInlineValuesToTheSizeInTheDescriptor) {
  Geometry geometry("g");
  geometry.AppendVariable(MakeVariable("cut", 12, NumericArray(6, 1, nullptr)));
  geometry.AppendVariable(MakeVariable("S", 12, NumericArray::Of(Ramp(1, 1.0F))));
  QovJbf::JbFile file;
  geometry.WriteJb(file, "Light Data", "Heavy Data", "Attributes", "0.4");
  EXPECT_EQ(StreamBytes(file, "Heavy Data"),
            "000000000000"
            "0000803f");
}

TEST(Geometry, NeedsAnOffsetForEveryStoredVariable) {
  Geometry geometry("g");
  geometry.AppendVariable(MakeVariable("S", 12, {}));
  QovJbf::JbFile file;
  ExpectError(ErrorType::ElementNotFound, "Element Not Found",
              [&] { geometry.WriteJb(file, "Light Data", "Heavy Data", "Attributes", "0.7"); });
}

}  // namespace
