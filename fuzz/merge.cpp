#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "InputLayout.h"
#include "MemoryFile.h"
#include "Models.h"
#include "Qov/Ryx/MergeEntryPoints.h"
#include "Qov/Ryx/RyxMerge.h"
#include "Target.h"
#include "support/ScopedEnvironment.h"

/// Merges two models: mode: u8 | length of the first: u32 | first | second. What was accepted one
/// by one is merged as datasets, and what was merged can be loaded. Every other six modes are the
/// same with whole blocks copied.
namespace {

using namespace Qov::Fuzz;
using Qov::Test::ScopedEnvironment;
using Paths = std::vector<std::string>;
using EntryPoint = int (*)(int, const char* const*);

constexpr int kDone = 0;
constexpr std::uint8_t kModes = 6;
/// Models below it can be put below one another without an id that is too high.
constexpr std::uint32_t kHighId = 1U << 30;

int RunEntryPoint(EntryPoint function, const Paths& inputs, const std::string& output) {
  const std::array<const char*, 4> arguments = {"fuzz", inputs[0].c_str(), inputs[1].c_str(),
                                                output.c_str()};
  return function(static_cast<int>(arguments.size()), arguments.data());
}

int Merge(std::uint8_t mode, const Paths& inputs, const std::string& output) {
  const ScopedEnvironment copies("RYXMERGE_COPY_BLOCKS", mode / kModes % 2 == 0 ? "0" : "1");
  switch (mode % kModes) {
    case 0:
      return QovRyx::merge_as_datasets(inputs, output);
    case 1:
      return QovRyx::merge_as_instances(inputs, output, true, false, false);
    case 2:
      return QovRyx::merge_as_instances(inputs, output, true, true, false);
    case 3:
      return QovRyx::merge_as_instances(inputs, output, true, false, true);
    case 4:
      return RunEntryPoint(&QovRyx::cae_merge, inputs, output);
    default:
      return RunEntryPoint(&QovRyx::cae_merge_cs, inputs, output);
  }
}

struct Verdict {
  bool mIsSound = false;
  bool mIsSmall = false;
  bool mHasHighIds = false;
};

Verdict Examine(const std::string& path) {
  Verdict verdict;
  QovRyx::Tree tree(false);
  verdict.mIsSound = Accepts([&] {
    Load(tree, path);
    verdict.mIsSmall = ReadArrays(tree);
  });
  verdict.mHasHighIds = tree.GetNodes().GetNextId() > kHighId;
  return verdict;
}

}  // namespace

const InputLayout Qov::Fuzz::kInputLayout{.mPrefix = 1, .mIsPair = true};

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static MemoryFile first;
  static MemoryFile second;
  static MemoryFile output;
  if (size == 0) return 0;
  const FilePair pair = SplitPair({data + 1, size - 1});
  first.SetContent(pair.mFirst.data(), pair.mFirst.size());
  second.SetContent(pair.mSecond.data(), pair.mSecond.size());
  const std::array verdicts = {Examine(first.GetPath()), Examine(second.GetPath())};
  const auto all = [&verdicts](auto member) {
    return std::all_of(verdicts.begin(), verdicts.end(),
                       [member](const Verdict& verdict) { return verdict.*member; });
  };
  const bool areSmall = all(&Verdict::mIsSmall);
  if (all(&Verdict::mIsSound) && !areSmall) return 0;
  int status = 0;
  {
    const SilentErrors silence;
    status = Merge(data[0], {first.GetPath(), second.GetPath()}, output.GetPath());
  }
  const bool mustMerge =
      data[0] % kModes == 0 && areSmall && !verdicts[0].mHasHighIds && !verdicts[1].mHasHighIds;
  if (mustMerge) Require(status == kDone, "models that can be read can be merged");
  if (status == kDone && areSmall) {
    Require(Examine(output.GetPath()).mIsSound, "what was merged can be loaded");
  }
  return 0;
}
