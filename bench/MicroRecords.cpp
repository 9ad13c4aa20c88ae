#include <benchmark/benchmark.h>

#include <string>

#include "Qov/Ryx/BlockVersionedIo.h"
#include "Qov/Ryx/ViewPoint.h"
#include "model/AttributesIo.h"

namespace {

/// Returns a view of a model with so many hidden and moved parts.
QovRyx::ViewPoint MakeView(std::int64_t numParts) {
  QovRyx::ViewPoint view;
  for (std::int64_t i = 0; i < numParts; ++i) {
    const std::string part = "Part " + std::to_string(i);
    view.mViewState.mHiddenState.mHiddenEntities[part] = 1;
    view.mViewState.mXplodeState.mOffsets[part] = {0, 0, 1};
  }
  return view;
}

void WriteRecords(benchmark::State& state) {
  const QovRyx::ViewPoint view = MakeView(state.range(0));
  for (auto _ : state) {
    QovJbf::Block block;
    QovJbf::CopyToBlock_Versioned(block, view);
    benchmark::DoNotOptimize(block.GetSize());
  }
}

void ReadRecords(benchmark::State& state) {
  QovJbf::Block block;
  QovJbf::CopyToBlock_Versioned(block, MakeView(state.range(0)));
  for (auto _ : state) {
    block.SetPosition(0);
    QovRyx::ViewPoint view;
    QovJbf::CopyFromBlock_Versioned(block, view);
    benchmark::DoNotOptimize(view);
  }
}

QovUtil::AttributeMap MakeAttributes(std::int64_t size) {
  QovUtil::AttributeMap attributes;
  for (std::int64_t i = 0; i < size; ++i) {
    const std::string name = "attribute " + std::to_string(i);
    const auto number = static_cast<std::uint32_t>(i);
    if (i % 2 == 0) {
      attributes[name] = number;
    } else {
      attributes[name] = name;
    }
  }
  return attributes;
}

constexpr int kNumMaps = 1000;

void WriteAttributes(benchmark::State& state) {
  const QovUtil::AttributeMap attributes = MakeAttributes(state.range(0));
  for (auto _ : state) {
    QovJbf::JbFile file;
    for (int i = 0; i < kNumMaps; ++i) QovUtil::WriteAttributesToJbf(file, "A", attributes);
  }
  state.SetItemsProcessed(state.iterations() * kNumMaps * state.range(0));
}

void ReadAttributes(benchmark::State& state) {
  const QovUtil::AttributeMap attributes = MakeAttributes(state.range(0));
  const std::string path = "micro_attributes.jbf";
  {
    QovJbf::JbFile file;
    for (int i = 0; i < kNumMaps; ++i) QovUtil::WriteAttributesToJbf(file, "A", attributes);
    file.OpenFile(path, "wb+");
    file.WriteHeader();
    file.GetIndex().WriteAllBuffersToFileStream(file.GetStream());
    file.CloseFile();
  }
  for (auto _ : state) {
    QovJbf::JbFile file;
    file.OpenFile(path, "rb");
    for (int i = 0; i < kNumMaps; ++i) {
      QovUtil::AttributeMap read;
      QovUtil::ReadAttributesFromJbf(file, "A", read);
      benchmark::DoNotOptimize(read);
    }
  }
  std::remove(path.c_str());
  state.SetItemsProcessed(state.iterations() * kNumMaps * state.range(0));
}

BENCHMARK(WriteRecords)->Arg(0)->Arg(1000);
BENCHMARK(ReadRecords)->Arg(0)->Arg(1000);
BENCHMARK(WriteAttributes)->Arg(1)->Arg(100);
BENCHMARK(ReadAttributes)->Arg(1)->Arg(100);

}  // namespace
