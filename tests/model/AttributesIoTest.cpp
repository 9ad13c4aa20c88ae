#include "model/AttributesIo.h"

#include <gtest/gtest.h>

#include "support/Errors.h"
#include "support/Streams.h"
#include "support/TempDir.h"

namespace {

const std::string kKey = "Attributes";

TEST(AttributesIo, WritesSixColumnsWithTheStringsLast) {
  QovJbf::JbFile file;
  QovUtil::WriteAttributesToJbf(
      file, kKey, {{"b", std::string("mm")}, {"a", std::uint32_t{7}}, {"B", 2.0}, {"c", 1.0F}});
  EXPECT_EQ(Qov::Test::StreamBytes(file, kKey),
            "04000000"                  // four names, sorted byte by byte
            "0100000042"                // B
            "0100000061"                // a
            "0100000062"                // b
            "0100000063"                // c
            "0400000003000201"          // types: double, unsigned, string, float
            "0100000007000000"          // unsigned
            "010000000000803f"          // float
            "010000000000000000000040"  // double
            "01000000020000006d6d");    // string
}

/// Other programs may store attributes like this.
TEST(AttributesIo, SortsNamesAndKeepsTheFirstOfEqualOnes) {
  const Qov::Test::TempDir dir;
  QovJbf::JbFile written;
  QovJbf::Index& index = written.GetIndex();
  index.Put(kKey, std::vector<std::string>{"b", "a", "b", std::string("a\0x", 3), "", "c"});
  index.Put(kKey, std::vector<std::uint8_t>{0, 2, 3, 0, 1, 2});
  index.Put(kKey, std::vector<std::uint32_t>{1, 2});
  index.Put(kKey, std::vector<float>{0.5F});
  index.Put(kKey, std::vector<double>{4.0});
  index.Put(kKey, std::vector<std::string>{std::string("m\0m", 3), "last"});
  QovUtil::WriteAttributesToJbf(written, kKey, {});
  Qov::Test::WriteTo(written, dir / "a.jbf");
  QovJbf::JbFile read;
  read.OpenFile(dir / "a.jbf", "rb");
  QovUtil::Attributes attributes;
  const QovJbf::ReadLosses lossesBefore = QovJbf::GetReadLosses();
  QovUtil::ReadAttributesFromJbf(read, kKey, attributes);
  const QovJbf::ReadLosses losses = QovJbf::GetReadLosses() - lossesBefore;
  EXPECT_EQ(losses.mNumEqualKeys, 2U);
  EXPECT_EQ(losses.mNumCutTexts, 2U);
  const QovUtil::AttributeMap expected = {
      {"", 0.5F}, {"a", std::string("m")}, {"b", 1U}, {"c", std::string("last")}};
  EXPECT_EQ(QovUtil::AttributeMap(attributes), expected);
  EXPECT_EQ(attributes, QovUtil::Attributes(expected));
  const QovUtil::Attributes before = attributes;
  attributes["b"] = 2.0;
  attributes.erase("a");
  EXPECT_EQ(QovUtil::AttributeMap(before), expected);
  EXPECT_EQ(attributes, QovUtil::Attributes({{"", 0.5F}, {"b", 2.0}, {"c", std::string("last")}}));
  QovUtil::ReadAttributesFromJbf(read, kKey, attributes);
  EXPECT_TRUE(attributes.empty());
}

struct BadColumns {
  std::vector<std::string> mNames;
  std::vector<std::uint8_t> mTypes;
  std::vector<std::uint32_t> mUnsigned;
};

TEST(AttributesIo, RefusesColumnsThatDisagree) {
  const Qov::Test::TempDir dir;
  const std::vector<BadColumns> cases = {
      {{"a"}, {}, {}},          // no type
      {{"a"}, {0}, {}},         // no value
      {{"a"}, {0}, {1, 2}},     // an additional value
      {{"a"}, {0, 0}, {1, 2}},  // an additional type
      {{}, {}, {1}},            // a value without a name
      {{"a"}, {4}, {1}},        // an unknown type
  };
  for (const BadColumns& bad : cases) {
    QovJbf::JbFile written;
    written.GetIndex().Put(kKey, bad.mNames);
    written.GetIndex().Put(kKey, bad.mTypes);
    written.GetIndex().Put(kKey, bad.mUnsigned);
    for (int i = 0; i < 3; ++i) written.GetIndex().Put(kKey, std::uint32_t{0});
    Qov::Test::WriteTo(written, dir / "a.jbf");
    QovJbf::JbFile read;
    read.OpenFile(dir / "a.jbf", "rb");
    QovUtil::AttributeMap attributes;
    Qov::Test::ExpectError(Qov::Test::ErrorType::MismatchError, "attribute map disagree",
                           [&] { QovUtil::ReadAttributesFromJbf(read, kKey, attributes); });
  }
}

}  // namespace
