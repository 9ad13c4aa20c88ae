#include <benchmark/benchmark.h>

#include <array>
#include <cstdlib>
#include <string>

#include "Qov/Jbf/Index.h"

namespace {

constexpr std::uint32_t kBlockSize = 64;

/// Sets the block size far below the size of an array while the object exists.
class SmallBlocks {
 public:
  SmallBlocks() {
    setenv("TELMORAX_MAX_RYX_BLOCK_SIZE", std::to_string(kBlockSize).c_str(), 1);
    QovJbf::default_block_size = kBlockSize;
  }
  ~SmallBlocks() { unsetenv("TELMORAX_MAX_RYX_BLOCK_SIZE"); }
  SmallBlocks(const SmallBlocks&) = delete;
  SmallBlocks& operator=(const SmallBlocks&) = delete;
};

QovJbf::Index MakeIndex(std::int64_t numBlocks) {
  static constexpr std::array<unsigned char, kBlockSize> kBytes{};
  QovJbf::Index index;
  for (std::int64_t i = 0; i < numBlocks; ++i) index.Put("S", kBytes.data(), kBlockSize);
  return index;
}

void GrowIndex(benchmark::State& state) {
  const SmallBlocks small;
  for (auto _ : state) benchmark::DoNotOptimize(MakeIndex(state.range(0)));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// Measures GetStreamLength, which is called for each record of a tree.
void StreamLength(benchmark::State& state) {
  const SmallBlocks small;
  const QovJbf::Index index = MakeIndex(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(index.GetStreamLength("S"));
}

void WriteIndex(benchmark::State& state) {
  const SmallBlocks small;
  for (auto _ : state) {
    QovJbf::Index index = MakeIndex(state.range(0));
    std::FILE* file = std::tmpfile();
    index.WriteAllBuffersToFileStream(file);
    std::fclose(file);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(GrowIndex)->Arg(2000)->Arg(20000)->Unit(benchmark::kMillisecond);
BENCHMARK(StreamLength)->Arg(2000)->Arg(20000);
BENCHMARK(WriteIndex)->Arg(2000)->Arg(20000)->Unit(benchmark::kMillisecond);

}  // namespace
