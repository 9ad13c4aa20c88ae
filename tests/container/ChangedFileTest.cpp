#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "ContainerSupport.h"
#include "Qov/Jbf/OutputLocks.h"
#include "container/SourceFile.h"

/// Files that another program changes while they are read or written.
namespace QovJbf {
namespace {

using namespace Qov::Test;

std::array<timespec, 2> GetTimes(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(::stat(path.c_str(), &status), 0);
  return {status.st_atim, status.st_mtim};
}

void SetTimes(const std::string& path, const std::array<timespec, 2>& times) {
  EXPECT_EQ(::utimensat(AT_FDCWD, path.c_str(), times.data(), 0), 0);
}

class ChangedFileTest : public testing::Test {
 protected:
  void Write(const std::string& path) const {
    WriteContainer(path, [&](JbFile& file) {
      file.GetIndex().Put(kStream, mContent.data(), mContent.size());
    });
  }
  bool IsLockedForOthers() const {
    const int descriptor = ::open(mPath.c_str(), O_RDWR);
    const bool isLocked = ::flock(descriptor, LOCK_EX | LOCK_NB) != 0;
    ::close(descriptor);
    return isLocked;
  }

  const std::string mContent = SomeBytes(1000, 1);
  TempDir mFolder;
  const std::string mPath = mFolder / "container";
};

TEST_F(ChangedFileTest, ChangedInputIsNoticedOnOpeningAndClosing) {
  const std::string other = mFolder / "other";
  // Each change affects one of: device and inode, size, modification time.
  const std::function<void()> changes[] = {[&] {
                                             Write(other);
                                             SetTimes(other, GetTimes(mPath));
                                             std::filesystem::rename(other, mPath);
                                           },
                                           [&] {
                                             const auto times = GetTimes(mPath);
                                             WriteFile(mPath, ReadFile(mPath) + "?");
                                             SetTimes(mPath, times);
                                           },
                                           [&] {
                                             auto times = GetTimes(mPath);
                                             times[1].tv_nsec ^= 1;
                                             SetTimes(mPath, times);
                                           },
                                           [&] { std::filesystem::remove(mPath); }};
  for (std::size_t i = 0; i < std::size(changes); ++i) {
    SCOPED_TRACE(i);
    Write(mPath);
    JbFile file;
    file.OpenFile(mPath, "rb");
    const auto reader = file.OpenStreamReader(kStream);
    std::string part(10, '\0');
    EXPECT_NO_THROW(reader->Read(0, part.data(), part.size()));
    EXPECT_EQ(part, mContent.substr(0, 10));
    EXPECT_NO_THROW(reader->GetIdentity().CheckUnchanged());
    while (SourceFile::CloseOldest()) {
    }
    changes[i]();
    const auto expectError = [&](const std::function<void()>& call) {
      ExpectError(ErrorType::ReadError, "\"" + mPath + "\" changed while it was read", call);
    };
    expectError([&] { reader->Read(0, part.data(), part.size()); });
    expectError([&] { reader->GetIdentity().CheckUnchanged(); });
    const bool isSameFile = i == 1 || i == 2;
    EXPECT_EQ(reader->ReadsFrom(mPath), isSameFile);
    if (isSameFile) expectError([&] { file.CloseFile(); });
  }
}

TEST_F(ChangedFileTest, SecondWriterIsRefused) {
  Write(mPath);
  const std::string before = ReadFile(mPath);
  for (const char* mode : {"wb+", "rb+"}) {
    const auto expectRefusal = [&] {
      JbFile second;
      ExpectError(ErrorType::MiscellaneousError, "is being written by another run",
                  [&] { second.OpenFile(mPath, mode); });
    };
    {
      JbFile first;
      first.OpenFile(mPath, "rb+");
      expectRefusal();
      first.CloseFile();
    }
    EXPECT_EQ(ReadFile(mPath), before) << "truncated before it was locked";
    EXPECT_FALSE(IsLockedForOthers());
    {
      JbFile dropped;
      dropped.OpenFile(mPath, "rb+");
      EXPECT_TRUE(IsLockedForOthers());
    }
    EXPECT_FALSE(IsLockedForOthers());
  }
  for (const char* device : {"/dev/null", "/dev/full"}) {
    JbFile first;
    first.OpenFile(device, "wb+");
    JbFile second;
    EXPECT_NO_THROW(second.OpenFile(device, "wb+"));
    EXPECT_NO_THROW(second.CloseFile());
  }
}

TEST_F(ChangedFileTest, OutputStaysLockedBetweenTwoSaves) {
  {
    const OutputLocks locks;
    Write(mPath);
    EXPECT_TRUE(IsLockedForOthers());
    JbFile again;
    EXPECT_NO_THROW(again.OpenFile(mPath, "wb+"));
    EXPECT_EQ(ReadFile(mPath), "");
    again.WriteHeader();
    EXPECT_NO_THROW(again.CloseFile());
    EXPECT_EQ(ReadFile(mPath).size(), 12U);
    EXPECT_TRUE(IsLockedForOthers());
    WriteFile(mFolder / "other", "precious");
    std::filesystem::rename(mFolder / "other", mPath);
    ExpectError(ErrorType::WriteError, "removed or replaced",
                [&] { again.OpenFile(mPath, "wb+"); });
  }
  EXPECT_EQ(ReadFile(mPath), "precious");
  EXPECT_FALSE(IsLockedForOthers());
}

TEST_F(ChangedFileTest, ReplacedOutputIsAnError) {
  const std::string other = mFolder / "other";
  const std::function<void()> changes[] = {[&] { std::filesystem::remove(mPath); },
                                           [&] {
                                             WriteFile(other, "precious");
                                             std::filesystem::rename(other, mPath);
                                           }};
  for (const auto& change : changes) {
    JbFile file;
    file.OpenFile(mPath, "wb+");
    file.WriteHeader();
    change();
    ExpectError(ErrorType::WriteError, "\"" + mPath + "\" was removed or replaced",
                [&] { file.CloseFile(); });
    EXPECT_EQ(file.GetStream(), nullptr);
  }
  EXPECT_EQ(ReadFile(mPath), "precious");
}

}  // namespace
}  // namespace QovJbf
