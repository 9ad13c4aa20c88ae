#include <gtest/gtest.h>

#include <random>

#include "model/StreamNames.h"
#include "support/Errors.h"
#include "support/ModelCompare.h"
#include "support/ScopedEnvironment.h"
#include "support/Streams.h"
#include "support/TempDir.h"

namespace Qov::Test {
namespace {

using namespace QovRyx;

/// Adds arrays of many lengths and widths. Some of them need several chunks of a block.
void AddNoise(Tree& tree) {
  std::mt19937 random(1);
  Geometry& geometry = AddNode<Geometry>(tree, 1, "noise");
  for (unsigned i = 0; i < 12; ++i) {
    std::vector<std::uint32_t> values(random() % (i % 4 == 0 ? 200000 : 3000));
    for (std::uint32_t& value : values) value = static_cast<std::uint32_t>(random()) & 0x7F00FF03;
    const std::uint8_t width = i % 3 == 0 ? 3 : 1;
    geometry.AppendVariable(MakeVariable(std::to_string(i), i, NumericArray::Of(values, width)));
  }
}

TEST(HeavyPass, IsEqualForAnyBlockSizeAndThreadCount) {
  const TempDir dir;
  Tree built("maker", "1", false);
  BuildPlate(built, {"Stress"}, 1, 5000);
  AddNoise(built);
  SaveTree(built, dir / "built.ryx");
  const std::string expected = ReadStreams(dir / "built.ryx")[kHeavyData];
  Tree loaded(false);
  LoadTree(loaded, dir / "built.ryx");
  for (const auto& limit :
       std::initializer_list<std::optional<std::string>>{"100", "5000", "1000000", std::nullopt}) {
    const ScopedEnvironment blockSize("TELMORAX_MAX_RYX_BLOCK_SIZE", limit);
    for (const char* threads : {"1", "2", "3", "8"}) {
      const ScopedEnvironment environment("RYXMERGE_THREADS", threads);
      for (Tree* tree : {&built, &loaded}) {  // arrays from memory, and arrays from the file
        SaveTree(*tree, dir / "out.ryx");
        EXPECT_TRUE(ReadStreams(dir / "out.ryx")[kHeavyData] == expected)
            << threads << " threads, " << limit.value_or("no") << " limit";
      }
    }
    EXPECT_EQ(DescribeModel(dir / "out.ryx"), DescribeModel(built));
  }
}

constexpr std::size_t kNumValues = 1009;
constexpr std::size_t kSize = kNumValues * sizeof(std::uint32_t);

/// Writes a file in which all results have the same offset. No writer of this project does that.
void SaveShared(const std::string& path, std::size_t numResults) {
  Tree tree(false);
  Geometry& geometry = AddNode<Geometry>(tree, 1, "shared");
  for (std::size_t i = 0; i < numResults; ++i) {
    geometry.AppendVariable(
        MakeVariable(std::to_string(i), 12, NumericArray::Of(Ramp(kNumValues, 1.0F))));
  }
  SaveTree(tree, path);
  Streams streams = ReadStreams(path);
  streams[kHeavyData].resize(kSize);
  for (std::uint64_t offset = kSize; offset < numResults * kSize; offset += kSize) {
    std::string& light = streams[kLightData];
    light.replace(light.find(Image(offset)), sizeof offset, sizeof offset, '\0');
  }
  WriteStreams(path, streams);
}

TEST(HeavyPass, SharedBytesStaySharedUpToALimit) {
  const TempDir dir;
  SaveShared(dir / "shared.ryx", 60);
  Tree tree(false);
  LoadTree(tree, dir / "shared.ryx");
  const std::string before = DescribeModel(tree);
  SaveTree(tree, dir / "saved.ryx");
  EXPECT_EQ(ReadStreams(dir / "saved.ryx")[kHeavyData].size(), kSize);
  EXPECT_EQ(DescribeModel(dir / "saved.ryx"), before);

  SaveShared(dir / "hostile.ryx", 70);
  ExpectError(ErrorType::OutOfBounds, "Too many arrays share their bytes",
              [&] { DescribeModel(dir / "hostile.ryx"); });

  Geometry& geometry = *AsGeometry(tree.GetNodes().GetReqNode(2));
  for (const Geometry::VarStruct variable = geometry.GetVariables()[0];
       geometry.GetVariables().size() < 200;) {
    geometry.AppendVariable(variable);
  }
  for (const char* copy : {"0", "1"}) {
    const ScopedEnvironment blocks("RYXMERGE_COPY_BLOCKS", copy);
    SaveTree(tree, dir / "saved.ryx");
    EXPECT_EQ(DescribeModel(dir / "saved.ryx"), DescribeModel(tree));
  }
}

/// Arrays without a complete element take no bytes.
TEST(HeavyPass, IncompleteElementsAreNotStored) {
  const TempDir dir;
  Tree tree(false);
  Geometry& geometry = AddNode<Geometry>(tree, 1, "Mesh");
  for (int i = 0; i < 100; ++i) {
    geometry.AppendVariable(MakeVariable(std::to_string(i), 12, NumericArray(3, 1, nullptr)));
  }
  SaveTree(tree, dir / "a.ryx");
  EXPECT_EQ(DescribeModel(dir / "a.ryx"), DescribeModel(tree));
}

}  // namespace
}  // namespace Qov::Test
