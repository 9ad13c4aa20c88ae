#include "ryxFixture.h"

namespace Qov::Test {
namespace {

using RyxSample = RyxProgram;

TEST_F(RyxSample, WritesTheSameModelsEveryTime) { ExpectTranscript("sample.txt"); }

TEST_F(RyxSample, WritesModelsOfTheGivenSize) { ExpectTranscript("sample_sizes.txt"); }

}  // namespace
}  // namespace Qov::Test
