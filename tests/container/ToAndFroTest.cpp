#include <gtest/gtest.h>

#include "ContainerSupport.h"
#include "support/BuildKind.h"

namespace QovJbf {
namespace {

using namespace Qov::Test;

constexpr const char* kStream = "Heavy Data";
constexpr std::uint8_t kHeavy = BlockFlag::kCompressed | BlockFlag::kFreezeWhenFull;

/// Reading that jumps about must not cost a whole block, or a look at all blocks, each time: what
/// takes a moment here would take hours.
TEST(ToAndFro, ABlockIsNotInflatedEachTime) {
  const TempDir folder;
  const ScopedEnvironment limit(kLimitVariable, "2000000");
  const std::string content = SomeBytes(6000000, 1);
  WriteContainer(folder / "file",
                 [&](JbFile& file) { PutInPieces(file, kStream, content, 1000000, kHeavy); });
  std::shared_ptr<StreamReader> reader;
  {
    JbFile file;
    file.OpenFile(folder / "file", "rb");
    reader = file.OpenStreamReader(kStream);
  }
  for (std::size_t i = 1; i < 60000; ++i) {
    // Backwards in each of three blocks, and from one to the next.
    const std::size_t offset = (i % 3 + 1) * 2000000 - i * 30;
    std::string part(20, '\0');
    reader->Read(offset, part.data(), part.size());
    ASSERT_EQ(part, content.substr(offset, part.size())) << offset;
  }
  EXPECT_LT(reader->GetNumInVain(), 6 * content.size());
}

TEST(ToAndFro, TinyBlocksAreNotAllLookedAtEachTime) {
  constexpr std::uint32_t kMany = kIsSlow ? 3000 : 10000;
  const TempDir folder;
  const ScopedEnvironment limit(kLimitVariable, "1");
  WriteContainer(folder / "file", [](JbFile& file) {
    for (std::uint32_t i = 0; i < kMany; ++i) file.GetIndex().Put(kStream, std::uint64_t{i});
  });
  JbFile file;
  file.OpenFile(folder / "file", "rb");
  const auto expect = [&file](std::uint32_t first, std::uint32_t n) {
    file.SetBlockPosition(kStream, 8 * std::uint64_t{first});
    for (std::uint32_t i = first; i < first + n; ++i) {
      std::uint64_t value = 0;
      file.Require(kStream, value);
      ASSERT_EQ(value, i);
    }
  };
  for (int pass = 0; pass < 3; ++pass) {  // those that are come to again stay in memory
    for (std::uint32_t i = kMany; i-- > 0;) expect(i, 1);
  }
  for (std::uint32_t i = 0; i < kMany; ++i) expect(i % 7, 3);
}

}  // namespace
}  // namespace QovJbf
