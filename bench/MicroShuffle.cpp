#include <benchmark/benchmark.h>

#include <cstdint>
#include <numeric>
#include <vector>

#include "diagnostics/ByteShuffle.h"

namespace {

std::vector<std::uint32_t> MakeValues(benchmark::State& state) {
  std::vector<std::uint32_t> values(static_cast<std::size_t>(state.range(0)));
  std::iota(values.begin(), values.end(), 1U);
  return values;
}

void CountBytes(benchmark::State& state) {
  state.SetBytesProcessed(state.iterations() * state.range(0) * 4);
}

void Shuffle(benchmark::State& state) {
  std::vector<std::uint32_t> values = MakeValues(state);
  const auto width = static_cast<unsigned char>(state.range(1));
  for (auto _ : state) {
    QovUtil::ShuffleMultiVectorBytes(values, width);
    benchmark::ClobberMemory();
  }
  CountBytes(state);
}

void UnShuffle(benchmark::State& state) {
  std::vector<std::uint32_t> values = MakeValues(state);
  const auto width = static_cast<unsigned char>(state.range(1));
  for (auto _ : state) {
    QovUtil::UnShuffleMultiVectorBytes(values, width);
    benchmark::ClobberMemory();
  }
  CountBytes(state);
}

/// Sizes that fit into a cache and that do not; scalars and vectors.
BENCHMARK(Shuffle)->ArgsProduct({{6000, 6000000}, {1, 3}});
BENCHMARK(UnShuffle)->ArgsProduct({{6000, 6000000}, {1, 3}});

}  // namespace
