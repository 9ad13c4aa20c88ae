#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "Faults.h"
#include "Qov/Jbf/JbFile.h"
#include "check/BlockVerdict.h"
#include "support/CapturedErrors.h"
#include "support/Errors.h"
#include "support/ModelBuilder.h"
#include "support/TempDir.h"

namespace Qov::Test {
namespace {

/// A failed allocation in zlib does not prove that the file is damaged.
TEST(ZlibMemory, FailureIsNotReportedAsDamage) {
  constexpr std::uint64_t kFirstBlock = 2800;
  const TempDir folder;
  const std::string path = folder / "a.ryx";
  SavePlate(path, {"Stress|LC1"}, 0);
  QovJbf::JbFile file;
  file.OpenFile(path, "rb");
  file.ReadIndex();
  const auto reader = file.OpenStreamReader("Heavy Data");
  Tools::FileBytes bytes(path);
  std::uint32_t value = 0;
  const std::function<void()> inflations[] = {
      [&] { reader->Read(0, &value, sizeof value); }, [&] { file.Require("Ryx Tree", value); },
      [&] { Tools::InflateBlock(bytes, kFirstBlock, file.GetIndex().GetItems()[0].mSize); }};
  for (const Faults::Call call : {Faults::Call::Inflate, Faults::Call::Zlib}) {
    for (const auto& inflate : inflations) {
      const CapturedErrors errors;
      Faults::Arm(call, 1, true);
      bool isDone = true;
      try {
        inflate();
      } catch (const Util::Exception& error) {
        isDone = false;
        EXPECT_EQ(error.GetType(), ErrorType::MemoryAllocationError) << error.what();
      }
      EXPECT_EQ(Faults::Disarm(), !isDone);
      EXPECT_EQ(errors.Text(), "");
    }
  }
}

}  // namespace
}  // namespace Qov::Test
