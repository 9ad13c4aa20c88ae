#include "container/TemporaryOutput.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "container/SignalRemovals.h"
#include "support/Errors.h"
#include "support/Files.h"
#include "support/TempDir.h"

namespace QovJbf {
namespace {

using namespace Qov::Test;
namespace fs = std::filesystem;

constexpr bool kOverwrite = true;

class TemporaryOutputTest : public testing::Test {
 protected:
  void TearDown() override { ::umask(mMask); }

  static void Write(const std::string& path, bool overwrite, const std::string& text) {
    TemporaryOutput output(path, overwrite);
    WriteFile(output.GetTemporaryPath(), text);
    output.Commit();
  }
  static mode_t ModeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    return status.st_mode & 0777;
  }
  std::ptrdiff_t CountFiles() const {
    return std::distance(fs::directory_iterator(mDir.GetPath()), fs::directory_iterator());
  }

  const mode_t mMask = ::umask(027);
  const TempDir mDir;
  const std::string mPath = mDir / "out";
};

TEST_F(TemporaryOutputTest, AppearsOnlyWhenItIsCommitted) {
  {
    const TemporaryOutput output(mPath, false);
    WriteFile(output.GetTemporaryPath(), "unfinished");
    EXPECT_FALSE(fs::exists(mPath));
    EXPECT_EQ(CountFiles(), 1);
  }
  EXPECT_EQ(CountFiles(), 0);
  Write(mPath, false, "first");
  EXPECT_EQ(ReadFile(mPath), "first");
  EXPECT_EQ(ModeOf(mPath), 0640U);
  ::chmod(mPath.c_str(), 0604);
  {
    const TemporaryOutput output(mPath, kOverwrite);
    EXPECT_EQ(ModeOf(output.GetTemporaryPath()), 0600U);
    ExpectError(ErrorType::MiscellaneousError, "is being written by another run",
                [this] { TemporaryOutput(mPath, kOverwrite); });
  }
  EXPECT_EQ(ReadFile(mPath), "first");
  Write(mPath, kOverwrite, "second");
  EXPECT_EQ(ReadFile(mPath), "second");
  EXPECT_EQ(ModeOf(mPath), 0604U);
  const std::string longest = mDir / std::string(255, 'x');
  Write(longest, false, "long");
  EXPECT_EQ(ReadFile(longest), "long");
  EXPECT_EQ(CountFiles(), 2);
}

TEST_F(TemporaryOutputTest, FollowsSymbolicLinks) {
  fs::create_directory(mDir / "folder");
  fs::create_symlink("folder/target", mPath);
  ExpectError(ErrorType::ElementExists, "exists", [this] { TemporaryOutput(mPath, false); });
  for (const char* text : {"made", "replaced"}) {
    Write(mPath, kOverwrite, text);
    EXPECT_TRUE(fs::is_symlink(mPath));
    EXPECT_EQ(ReadFile(mDir / "folder/target"), text);
  }
  fs::create_symlink("circle", mDir / "circle");
  ExpectError(ErrorType::WriteError, "cannot write",
              [this] { TemporaryOutput(mDir / "circle", kOverwrite); });
}

TEST_F(TemporaryOutputTest, RefusesWhatItCannotReplace) {
  WriteFile(mPath, "before");
  ::mkfifo((mDir / "pipe").c_str(), 0666);
  const struct {
    std::string mPath;
    bool mOverwrite;
    ErrorType mType;
    const char* mText;
  } cases[] = {
      {mPath, false, ErrorType::ElementExists, "exists: name another output"},
      {mDir.GetPath(), kOverwrite, ErrorType::WriteError, "is not a regular file"},
      {mDir / "pipe", kOverwrite, ErrorType::WriteError, "is not a regular file"},
      {"/dev/null", kOverwrite, ErrorType::WriteError, "is not a regular file"},
      {mDir / "none/out", false, ErrorType::WriteError, "cannot write"},
      {mDir / "none/", false, ErrorType::WriteError, "cannot write"},
      {"", false, ErrorType::WriteError, "cannot write"},
  };
  for (const auto& test : cases) {
    ExpectError(test.mType, test.mText, [&] { TemporaryOutput(test.mPath, test.mOverwrite); });
  }
  EXPECT_EQ(ReadFile(mPath), "before");
  EXPECT_EQ(CountFiles(), 2);
  fs::create_hard_link(mPath, mDir / "input");
  ExpectError(ErrorType::MiscellaneousError, "is also an input", [this] {
    CheckIsNotAnInput(mPath, {mDir / "none", mDir / "input"});
  });
  CheckIsNotAnInput(mPath, {mDir / "pipe"});
  CheckRoom(mPath, 1);
  ExpectError(ErrorType::WriteError, "bytes, but its disk has only",
              [this] { CheckRoom(mPath, std::uint64_t{1} << 62); });
}

TEST_F(TemporaryOutputTest, NeverReplacesTheFileOfAnotherProgram) {
  {
    TemporaryOutput output(mPath, false);
    WriteFile(mPath, "theirs");
    ExpectError(ErrorType::ElementExists, "exists", [&] { output.Commit(); });
  }
  EXPECT_EQ(ReadFile(mPath), "theirs");
  {
    TemporaryOutput output(mPath, kOverwrite);
    const std::string temporary = output.GetTemporaryPath();
    fs::rename(temporary, mDir / "moved");
    WriteFile(temporary, "planted");
    ExpectError(ErrorType::WriteError, "was replaced", [&] { output.Commit(); });
  }
  EXPECT_EQ(ReadFile(mPath), "theirs");
}

TEST_F(TemporaryOutputTest, IsRemovedBySignals) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  WriteFile(mPath, "before");
  const auto writeAndRaise = [this](int signal) {
    std::signal(SIGHUP, SIG_IGN);
    RemoveOutputsOnSignals();
    TemporaryOutput output(mPath, kOverwrite);
    std::raise(SIGHUP);
    if (!fs::exists(output.GetTemporaryPath())) std::exit(1);
    std::raise(signal);
  };
  for (const int signal : {SIGINT, SIGTERM, SIGXCPU}) {
    EXPECT_EXIT(writeAndRaise(signal), testing::KilledBySignal(signal), "");
  }
  EXPECT_EQ(ReadFile(mPath), "before");
  EXPECT_EQ(CountFiles(), 1);
}

}  // namespace
}  // namespace QovJbf
