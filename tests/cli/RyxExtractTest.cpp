#include "ryxFixture.h"

namespace Qov::Test {
namespace {

using RyxExtract = RyxProgram;

TEST_F(RyxExtract, WritesWhatIsChosen) { ExpectTranscript("extract.txt"); }

}  // namespace
}  // namespace Qov::Test
