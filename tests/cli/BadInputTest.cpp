#include "RyxMergeFixture.h"

namespace {

using namespace Qov::Test;
using testing::HasSubstr;

class BadInput : public RyxMergeProgram {
 protected:
  /// Expects a failure that tells `text` and leaves the good input and the output alone.
  void ExpectFailure(const std::string& bad, const std::string& text) {
    const std::string good = Plate("good.ryx");
    const std::string before = ReadFile(good);
    for (const char* mode : {"--merge-as-datasets", "--merge-as-instances"}) {
      for (const auto& [first, second] : {std::pair(good, bad), std::pair(bad, good)}) {
        const Outcome outcome = Run({mode, first, second, mOutput});
        EXPECT_EQ(outcome.mStatus, 2) << bad;
        EXPECT_THAT(outcome.mErr, HasSubstr(text));
        EXPECT_FALSE(Exists(mOutput)) << bad;
      }
    }
    EXPECT_EQ(ReadFile(good), before);
  }
};

TEST_F(BadInput, IsToldAndLeavesNothingBehind) {
  const std::string whole = ReadFile(Plate("whole.ryx"));
  WriteFile(mDir / "empty.ryx", "");
  WriteFile(mDir / "text.ryx", "This is a letter, not a model.");
  std::filesystem::create_directory(mDir / "folder.ryx");
  ExpectFailure(mDir / "missing.ryx", "Unable to open file \"" + mDir / "missing.ryx" + "\"");
  ExpectFailure(mDir / "empty.ryx", "empty.ryx is not a Ryx file");
  ExpectFailure(mDir / "text.ryx", "text.ryx is not a Ryx file");
  ExpectFailure(mDir / "folder.ryx", "Exception \"");
  for (const std::size_t size :
       {std::size_t{8}, std::size_t{10}, std::size_t{1000}, std::size_t{2800}, whole.size() / 2}) {
    WriteFile(mDir / "cut.ryx", whole.substr(0, size));
    ExpectFailure(mDir / "cut.ryx", "Exception \"");
  }
  // Nothing of a second file's history is read; yet the file is not whole.
  WriteFile(mDir / "cut.ryx", whole.substr(0, whole.size() - 1));
  ExpectFailure(mDir / "cut.ryx", "The file was \"" + mDir / "cut.ryx" + "\".");
}

/// The node sets at the end of a further instance's heavy block are not read, nor is the checksum
/// behind them that vouches for the results in front.
TEST_F(BadInput, DamageBehindTheLastArrayIsFound) {
  std::string damaged = ReadFile(Plate("damaged.ryx"));
  std::uint32_t size = 0;
  std::memcpy(&size, damaged.data() + 16 + 4 + 133, sizeof(size));
  damaged[2800 + size - 1] ^= 1;
  WriteFile(mDir / "damaged.ryx", damaged);
  const Outcome outcome =
      Run({"--merge-as-instances", Plate("good.ryx"), mDir / "damaged.ryx", mOutput});
  EXPECT_EQ(outcome.mStatus, 2);
  EXPECT_THAT(outcome.mErr, HasSubstr("Error -3 while uncompressing block \nDamaged compressed "
                                      "block\nThe file was \"" +
                                      mDir / "damaged.ryx" + "\"."));
}

TEST_F(BadInput, NewerVersionIsNamed) {
  std::string newer = ReadFile(Plate("newer.ryx"));
  newer.replace(8, 3, "1.4");
  WriteFile(mDir / "newer.ryx", newer);
  ExpectFailure(mDir / "newer.ryx", "This file is of ryx file version 14.");
}

TEST_F(BadInput, ViewPointFileIsToldAndTheModelNotWritten) {
  const std::string model = Plate("model.ryx");
  WriteFile(mDir / "empty.vpt", "");
  WriteFile(mDir / "text.vpt", std::string(100, 'x'));
  for (const char* name : {"missing.vpt", "empty.vpt", "text.vpt"}) {
    const Outcome outcome = Run({model, Views("good.vpt"), mDir / name, mOutput});
    EXPECT_EQ(outcome.mStatus, 2) << name;
    EXPECT_THAT(outcome.mErr, HasSubstr("Exception \""));
    EXPECT_FALSE(Exists(mOutput));
  }
}

class OutputIsInput : public RyxMergeProgram {
 protected:
  void ExpectRefusal(const std::vector<std::string>& arguments, const std::string& input,
                     int status) {
    const std::string before = ReadFile(input);
    const Outcome outcome = Run(arguments);
    EXPECT_EQ(outcome.mStatus, status);
    EXPECT_THAT(outcome.mErr,
                HasSubstr("Output file \"" + arguments.back() + "\" is also an input"));
    EXPECT_EQ(ReadFile(input), before);
    EXPECT_FALSE(Exists(arguments.back() + ".temp"));
  }
};

TEST_F(OutputIsInput, WhateverNameItGoesBy) {
  const std::string a = Plate("a.ryx");
  const std::string b = Plate("b.ryx");
  std::filesystem::create_symlink(b, mDir / "symlink.ryx");
  std::filesystem::create_hard_link(b, mDir / "link.ryx");
  for (const std::string& output :
       {b, mDir / "." + "/b.ryx", mDir / "symlink.ryx", mDir / "link.ryx"}) {
    ExpectRefusal({a, b, output}, b, 2);
    ExpectRefusal({b, a, output}, b, 2);
    ExpectRefusal({"--merge-as-instances", a, b, output}, b, 2);
  }
}

TEST_F(OutputIsInput, WithViewPointFiles) {
  const std::string a = Plate("a.ryx");
  const std::string b = Plate("b.ryx");
  const std::string views = Views("v.vpt");
  ExpectRefusal({a, views, a}, a, 2);
  ExpectRefusal({a, views, views}, views, 2);
  ExpectRefusal({a, b, views, views}, views, 3);
  ExpectRefusal({a, b, views, b}, b, 3);
}

}  // namespace
