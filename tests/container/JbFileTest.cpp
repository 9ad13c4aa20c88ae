#include "Qov/Jbf/JbFile.h"

#include <gtest/gtest.h>

#include "ContainerSupport.h"
#include "support/ForeignLocale.h"

namespace QovJbf {
namespace {

using namespace Qov::Test;

std::string HexItem(int id, const std::string& name, std::uint32_t size, const char* flags) {
  return ToHex(std::string(1, static_cast<char>(id))) + "80000000" + ToHex(name) +
         std::string(2 * (128 - name.size()), '0') + ToHex(Image(size)) + flags + "00";
}

class JbFileTest : public testing::Test {
 protected:
  TempDir mFolder;
  const std::string mPath = mFolder / "container";
};

TEST_F(JbFileTest, WritesGoldenBytes) {
  WriteContainer(mPath, [](JbFile& file) {
    file.GetIndex().Put("Ryx Tree", std::uint64_t{0x0807060504030201});
  });
  std::string expected =
      "894a42460d0a1a0a"  // magic
      "312e3300"          // version
      "e00a0000"          // length of the root index
      "14000000" +        // number of its items
      HexItem(1, "Ryx Tree", 8, "00");
  for (int id = 2; id <= 20; ++id) expected += HexItem(id, "\vEmpty Block ", 0, "00");
  expected += "0102030405060708";
  EXPECT_EQ(ToHex(ReadFile(mPath)), expected);
}

TEST_F(JbFileTest, PlacesIndexBlocksBetweenTheStreams) {
  for (const std::uint32_t streams : {0U, 19U, 21U, 221U, 450U}) {
    WriteContainer(mPath, [&](JbFile& file) {
      for (std::uint32_t i = 0; i < streams; ++i) file.GetIndex().Put(std::to_string(i), i);
    });
    const std::string bytes = ReadFile(mPath);
    const std::size_t indexBlocks = streams < 20 ? 0 : 1 + (streams - 19) / 199;
    ASSERT_EQ(bytes.size(), 2800 + streams * 4 + indexBlocks * 27804) << streams;
    if (indexBlocks > 0) {
      EXPECT_EQ(ToHex(bytes.substr(2800 + 19 * 4, 4 + 139)),
                "c8000000" + HexItem(21, "19", 4, "00"));
      EXPECT_EQ(ToHex(bytes.substr(20 + 19 * 139, 139)),
                HexItem(20, "\vIndex Block ", 27804, "20"));
    }
    if (indexBlocks > 1) {
      const std::size_t second = 2800 + 19 * 4 + 27804 + 199 * 4;
      EXPECT_EQ(ToHex(bytes.substr(second, 4 + 139)), "c8000000" + HexItem(221, "218", 4, "00"));
    }
    JbFile file;
    file.OpenFile(mPath, "rb");
    std::uint32_t value = 0;
    for (std::uint32_t i = 0; i < streams; ++i) {
      file.Require(std::to_string(i), value);
      EXPECT_EQ(value, i);
    }
    EXPECT_FALSE(file.HasStream(std::to_string(streams)));
  }
}

TEST_F(JbFileTest, DistinguishesAbsentFromDamaged) {
  JbFile file;
  Index& index = file.GetIndex();
  std::uint32_t value = 5;
  EXPECT_NO_THROW(file.Get("short", value)) << "no file is open";
  EXPECT_NO_THROW(index.Get("short", &value, sizeof value));
  EXPECT_NO_THROW(index.AddFlags("short", 1));
  WriteContainer(mPath, [](JbFile& other) { other.GetIndex().Put("short", std::uint8_t{1}); });
  file.OpenFile(mPath, "rb");
  EXPECT_NO_THROW(file.Get("absent", value));
  EXPECT_EQ(value, 5U);
  const std::function<void()> calls[] = {
      [&] { file.Require("absent", value); }, [&] { index.GetReadingBlockIndex("absent"); },
      [&] { index.GetBlockSizeLimiter("absent"); }, [&] { index.GetStreamLength("absent"); }};
  for (const auto& call : calls) ExpectError(ErrorType::ElementNotFound, "Element Not Found", call);
  const std::function<void()> reads[] = {
      [&] { file.Get("short", value); },
      [&] { index.Get("short", &value, sizeof value, file.GetStream()); }};
  for (const auto& read : reads) ExpectError(ErrorType::OutOfBounds, "Not enough bytes", read);
}

TEST_F(JbFileTest, OpensAndCloses) {
  JbFile file;
  ExpectError(ErrorType::MiscellaneousError, "Unable to open file \"" + mPath + "\"",
              [&] { file.OpenFile(mPath, "rb"); });
  file.OpenFile("/dev/full", "wb+");
  ExpectError(ErrorType::MiscellaneousError, "File stream is already in use",
              [&] { file.OpenFile(mPath, "wb+"); });
  file.WriteHeader();
  ExpectError(ErrorType::WriteError, "Unable to write to file", [&] { file.CloseFile(); });
  EXPECT_NO_THROW(file.CloseFile());
  EXPECT_EQ(file.GetStream(), nullptr);
  JbFile dropped;
  dropped.OpenFile("/dev/full", "wb+");
  EXPECT_NO_THROW(dropped.WriteHeader());
}

TEST_F(JbFileTest, RefusesNewerVersions) {
  const auto isCurrent = [](const std::string& version) {
    bool current = false;
    JbFile::CheckSupport(version, current);
    return current;
  };
  for (const char* version : {"1.3", "1.0", "0.9", "0.7"}) EXPECT_TRUE(isCurrent(version));
  for (const char* version : {"0.6", "0.1", "", "nan", "-5", "-1e9"}) {
    EXPECT_FALSE(isCurrent(version)) << version;
  }
  ExpectError(ErrorType::UnknownVersion,
              "This file is of ryx file version 14.\n"
              "This version of Pelorin only supports ryx file version upto 13.\n",
              [&] { isCurrent("1.4"); });
  for (const char* version : {"1e30", "1e99", "inf"}) {
    ExpectError(ErrorType::UnknownVersion, "upto 13.", [&] { isCurrent(version); });
  }
}

TEST_F(JbFileTest, ReadsVersionsInAnyLocale) {
  const DecimalComma comma(mFolder);
  if (!comma.IsSet()) GTEST_SKIP() << "no locale with a decimal comma can be made";
  bool isCurrent = false;
  JbFile::CheckSupport("0.7", isCurrent);
  EXPECT_TRUE(isCurrent);
  ExpectError(ErrorType::UnknownVersion, "version 14",
              [&] { JbFile::CheckSupport("1.4", isCurrent); });
}

TEST_F(JbFileTest, RefusesMoreItemsThanTheFileHasBytes) {
  // Items without names: eleven zero bytes each.
  const std::string items = Image(400000U) + std::string(400000 * 11, '\0');
  WriteContainer(mPath, [&](JbFile& file) {
    file.GetIndex().Put("+Index Block ", items.data(), items.size());
    file.AddBlockTransformation("+Index Block ", BlockFlag::kCompressed);
  });
  std::string bytes = ReadFile(mPath);
  bytes[bytes.find('+')] = '\v';
  WriteFile(mPath, bytes);
  ASSERT_LT(bytes.size(), 40000U);
  JbFile file;
  file.OpenFile(mPath, "rb");
  ExpectError(ErrorType::ReadError, "Unable to read from file", [&] { file.ReadIndex(); });
  EXPECT_TRUE(file.GetIndex().GetItems().empty()) << "an incomplete index must not be used";
}

}  // namespace
}  // namespace QovJbf
