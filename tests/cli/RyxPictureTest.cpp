#include "ryxFixture.h"

namespace Qov::Test {
namespace {

using testing::HasSubstr;

class RyxPicture : public RyxProgram {
 protected:
  RyxPicture() { Run({"sample", mDir.GetPath().string()}); }
};

TEST_F(RyxPicture, SaysWhatItDraws) { ExpectTranscript("picture.txt"); }

TEST_F(RyxPicture, AppearsInATerminalThatShowsImages) {
  if (RunShell("script -qec 'stty cols 60' /dev/null </dev/null").mStatus != 0) {
    GTEST_SKIP() << "script(1) cannot open a pseudo-terminal on this machine";
  }
  const auto answer = [this](const std::string& bytes) {
    return RunShell("(sleep 0.2; printf '" + bytes +
                    "'; sleep 1) | script -qec 'ryx picture plate.ryx --size 64x64' /dev/null");
  };
  EXPECT_THAT(answer("\\033_Gi=31;OK\\033\\\\\\033[?62c").mOut, HasSubstr("\033_Ga=T,f=100,m="));
  EXPECT_THAT(answer("\\033[?62;4c").mOut, HasSubstr("\033Pq\"1;1;64;64#0;2;"));
  const Outcome silent = answer("");
  EXPECT_EQ(silent.mStatus, 2);
  EXPECT_THAT(silent.mOut, HasSubstr("this terminal does not show images"));
}

}  // namespace
}  // namespace Qov::Test
