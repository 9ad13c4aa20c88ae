#include "Qov/Jbf/JbFile.h"

#include <gtest/gtest.h>

#include "ContainerSupport.h"
#include "Qov/Jbf/BlockZlibUnCompressor.h"

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

TEST_F(JbFileTest, WritesAStreamOfEightBytesAsAFileOf2808) {
  WriteContainer(mPath, [](JbFile& file) {
    file.GetIndex().Put("Ryx Tree", std::uint64_t{0x0807060504030201});
  });
  std::string expected =
      "894a42460d0a1a0a"  // magic
      "312e3300"          // version
      "e00a0000"          // length of the root index
      "14000000" +        // items in it
      HexItem(1, "Ryx Tree", 8, "00");
  for (int id = 2; id <= 20; ++id) expected += HexItem(id, "\vEmpty Block ", 0, "00");
  expected += "0102030405060708";
  EXPECT_EQ(ToHex(ReadBytes(mPath)), expected);
}

TEST_F(JbFileTest, WritesAnEmptyContainer) {
  WriteContainer(mPath, [](JbFile&) {});
  EXPECT_EQ(std::filesystem::file_size(mPath), 2800U);
  JbFile file;
  file.OpenFile(mPath, "rb");
  EXPECT_FALSE(file.HasStream("Ryx Tree"));
}

TEST_F(JbFileTest, PlacesIndexBlocksBetweenTheStreams) {
  for (const std::uint32_t streams : {19U, 21U, 221U, 450U}) {
    WriteContainer(mPath, [&](JbFile& file) {
      for (std::uint32_t i = 0; i < streams; ++i) file.GetIndex().Put(std::to_string(i), i);
    });
    const std::string bytes = ReadBytes(mPath);
    const std::size_t indexBlocks = streams < 20 ? 0 : 1 + (streams - 19) / 199;
    ASSERT_EQ(bytes.size(), 2800 + streams * 4 + indexBlocks * 27804) << streams;
    if (indexBlocks > 0) {
      const std::string first = bytes.substr(2800 + 19 * 4, 4 + 139);
      EXPECT_EQ(ToHex(first), "c8000000" + HexItem(21, "19", 4, "00"));
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
  }
}

TEST_F(JbFileTest, ReadsAcrossTheBlocksOfAStream) {
  const ScopedEnvironment limit(kLimitVariable, "100");
  WriteContainer(mPath, [](JbFile& file) {
    for (std::uint32_t i = 0; i < 150; ++i) file.GetIndex().Put("numbers", i);
    file.AddBlockTransformation("numbers", BlockFlag::kCompressed);
  });
  JbFile file;
  file.OpenFile(mPath, "rb");
  EXPECT_TRUE(file.IsJbFile());
  EXPECT_EQ(file.ReadVersion(), "1.3");
  for (std::uint32_t i = 0, value = 0; i < 150; ++i) {
    file.Get("numbers", value);
    ASSERT_EQ(value, i);
  }
  EXPECT_LT(file.GetIndex().GetBlock(0).GetCapacity(), 200U);
}

TEST_F(JbFileTest, TellsAbsentFromBroken) {
  WriteContainer(mPath, [](JbFile& file) { file.GetIndex().Put("short", std::uint8_t{1}); });
  JbFile file;
  std::uint32_t value = 5;
  EXPECT_NO_THROW(file.Get("short", value)) << "no file is open";
  file.OpenFile(mPath, "rb");
  EXPECT_NO_THROW(file.Get("absent", value));
  EXPECT_EQ(value, 5U);
  ExpectError(ErrorType::ElementNotFound, "", [&] { file.Require("absent", value); });
  ExpectError(ErrorType::OutOfBounds, "", [&] { file.Get("short", value); });
}

TEST_F(JbFileTest, OpensAndCloses) {
  JbFile file;
  ExpectError(ErrorType::MiscellaneousError, "Unable to open file \"" + mPath + "\"",
              [&] { file.OpenFile(mPath, "rb"); });
  file.OpenFile(mPath, "wb+");
  ExpectError(ErrorType::MiscellaneousError, "File stream is already in use",
              [&] { file.OpenFile(mPath, "wb+"); });
  file.CloseFile();
  EXPECT_NO_THROW(file.CloseFile());
  EXPECT_EQ(file.GetStream(), nullptr);
}

TEST_F(JbFileTest, ReportsAFullDisk) {
  JbFile file;
  file.OpenFile("/dev/full", "wb+");
  file.WriteHeader();
  ExpectError(ErrorType::WriteError, "Unable to write to file", [&] { file.CloseFile(); });
  JbFile dropped;
  dropped.OpenFile("/dev/full", "wb+");
  EXPECT_NO_THROW(dropped.WriteHeader());
}

TEST_F(JbFileTest, KnowsWhichVersionsItReads) {
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

/// Reads all that a container holds; every way in which that may fail is an orderly one.
class DamagedFileTest : public JbFileTest {
 protected:
  DamagedFileTest() {
    WriteContainer(mPath, [](JbFile& file) {
      file.GetIndex().Put("text", std::string("plain"));
      PutInPieces(file, "heavy", SomeBytes(300, 1), 100, BlockFlag::kCompressed);
      PutInPieces(file, "heavier", SomeBytes(300, 2), 100, BlockFlag::kCompressed);
    });
    mBytes = ReadBytes(mPath);
  }

  bool ReadsWell(const std::string& bytes) {
    WriteBytes(mPath, bytes);
    try {
      JbFile file;
      file.OpenFile(mPath, "rb");
      if (!file.IsJbFile()) return false;
      bool isCurrent = false;
      JbFile::CheckSupport(file.ReadVersion(), isCurrent);
      std::string text;
      file.Require("text", text);
      for (const std::uint64_t offset : {250U, 50U}) {
        std::array<char, 50> part{};
        file.SetBlockPosition("heavy", offset);
        file.RequireBytes("heavy", part.data(), part.size());
      }
      file.SetBlockPosition("heavier", 1000);
      return ReadStreams(mPath).size() == 3;
    } catch (const Qov::Util::Exception&) {
      return false;
    } catch (const DamagedBlock&) {
      return false;
    }
  }

  std::string mBytes;
  const ScopedEnvironment mLimit{kLimitVariable, "120"};
  const CapturedError mError;
};

TEST_F(DamagedFileTest, RefusesEveryTruncation) {
  EXPECT_TRUE(ReadsWell(mBytes));
  for (std::size_t n = 0; n < mBytes.size(); ++n) {
    ASSERT_FALSE(ReadsWell(mBytes.substr(0, n))) << n;
  }
}

TEST_F(DamagedFileTest, SurvivesEveryByteThatIsWrong) {
  for (std::size_t i = 0; i < mBytes.size(); ++i) {
    const bool isPadding = mBytes[i] == 0 && i % 7 != 0;
    if (isPadding) continue;
    for (const int difference : {0x01, 0x80, 0xFF}) {
      std::string damaged = mBytes;
      damaged[i] = static_cast<char>(damaged[i] ^ difference);
      ASSERT_NO_THROW(ReadsWell(damaged)) << i;
    }
  }
}

TEST_F(DamagedFileTest, RefusesSizesThatTheFileCannotHold) {
  const auto errorWith = [&](std::size_t at, std::uint32_t lie, ErrorType type) {
    std::string damaged = mBytes;
    damaged.replace(at, 4, Image(lie));
    WriteBytes(mPath, damaged);
    JbFile file;
    file.OpenFile(mPath, "rb");
    std::string text = "before";
    ExpectError(type, type == ErrorType::ReadError ? "Unable to read from file" : "Not enough",
                [&] { file.Require("text", text); });
    return text == "before";
  };
  EXPECT_TRUE(errorWith(12, 0xFFFFFFFF, ErrorType::ReadError));        // root index
  EXPECT_TRUE(errorWith(16, 0x0FFFFFFF, ErrorType::OutOfBounds));      // its count
  EXPECT_TRUE(errorWith(21, 0xFFFFFFFF, ErrorType::OutOfBounds));      // length of a name
  EXPECT_TRUE(errorWith(20 + 133, 0xFFFFFFFF, ErrorType::ReadError));  // size of the block
  EXPECT_TRUE(errorWith(2800, 0x7FFFFFFF, ErrorType::OutOfBounds));    // length of the text
}

TEST_F(DamagedFileTest, RefusesIndexBlocksThatListMoreThanTheFileHasBytes) {
  // Items without names: eleven zeros each.
  const std::string items = Image(400000U) + std::string(400000 * 11, '\0');
  WriteContainer(mPath, [&](JbFile& file) {
    file.GetIndex().Put("+Index Block ", items.data(), items.size());
    file.AddBlockTransformation("+Index Block ", BlockFlag::kCompressed);
  });
  std::string bytes = ReadBytes(mPath);
  bytes[bytes.find('+')] = '\v';
  WriteBytes(mPath, bytes);
  ASSERT_LT(bytes.size(), 40000U);
  JbFile file;
  file.OpenFile(mPath, "rb");
  ExpectError(ErrorType::ReadError, "Unable to read from file", [&] { file.ReadIndex(); });
  EXPECT_TRUE(file.GetIndex().GetItems().empty()) << "a half-read index must not pass for one";
}

}  // namespace
}  // namespace QovJbf
