#include "ryxFixture.h"

namespace Qov::Test {
namespace {

using RyxSample = RyxProgram;

TEST_F(RyxSample, WritesTheSameModelsEveryTimeAndSaysSo) { ExpectTranscript("sample.txt"); }

TEST_F(RyxSample, GrowsAsAsked) { ExpectTranscript("sample_sizes.txt"); }

}  // namespace
}  // namespace Qov::Test
