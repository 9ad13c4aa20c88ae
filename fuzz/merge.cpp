#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "InputLayout.h"
#include "MemoryFile.h"
#include "Models.h"
#include "Qov/Ryx/InstanceNames.h"
#include "Qov/Ryx/MergeEntryPoints.h"
#include "Qov/Ryx/RyxMerge.h"
#include "Target.h"
#include "app/MergeOptions.h"
#include "support/ScopedEnvironment.h"

/// Merges two models. The input is:
///   mode: u8                 a kind of merge (ListMergeKinds), then cae_merge, cae_merge_cs;
///                            0 to 5; plus 6: the same with copied blocks
///   FilePair (Models.h)
/// Two models that can be loaded can be merged; the modes that need files of one structure merge
/// only such files. The result can be loaded.
namespace {

using namespace Qov::Fuzz;
using Qov::Test::ScopedEnvironment;
using Paths = std::vector<std::string>;
using EntryPoint = int (*)(int, const char* const*);

constexpr int kDone = 0;
constexpr int kRefused = 2;
constexpr std::array<EntryPoint, 2> kEntryPoints = {&QovRyx::cae_merge, &QovRyx::cae_merge_cs};
/// Two models whose ids are at most this can be merged without exceeding the highest id.
constexpr std::uint32_t kHighId = 1U << 30;

const std::vector<Qov::MergeOptions>& GetKinds() {
  static const std::vector<Qov::MergeOptions> kinds = Qov::ListMergeKinds();
  return kinds;
}

std::size_t CountModes() { return GetKinds().size() + kEntryPoints.size(); }

int RunEntryPoint(EntryPoint function, const Paths& inputs, const std::string& output) {
  const std::array<const char*, 4> arguments = {"fuzz", inputs[0].c_str(), inputs[1].c_str(),
                                                output.c_str()};
  return function(static_cast<int>(arguments.size()), arguments.data());
}

int Merge(std::uint8_t mode, const Paths& inputs, const std::string& output) {
  const ScopedEnvironment copies("RYXMERGE_COPY_BLOCKS", mode / CountModes() % 2 == 0 ? "0" : "1");
  const std::size_t kind = mode % CountModes();
  if (kind >= GetKinds().size()) {
    return RunEntryPoint(kEntryPoints[kind - GetKinds().size()], inputs, output);
  }
  const auto naming = GetKinds()[kind].GetNaming();
  return naming ? QovRyx::merge_as_instances(inputs, output, *naming)
                : QovRyx::merge_as_datasets(inputs, output);
}

struct Examined {
  explicit Examined(const std::string& path) {
    mIsSound = Accepts([&] {
      Load(mTree, path);
      mIsSmall = ReadArrays(mTree);
    });
  }

  QovRyx::Tree mTree{false};
  bool mIsSound = false;
  bool mIsSmall = false;
};

/// Returns true if an id of a node, or one that a tree record names, is above kHighId.
bool HasHighIds(const QovRyx::Tree& tree) {
  for (const auto& [id, entry] : tree.GetNodes()) {
    if (std::max({id, entry.mParent, entry.mPreviousSibling, entry.mNextSibling, entry.mFirstChild,
                  entry.mLastChild}) > kHighId) {
      return true;
    }
  }
  return false;
}

bool HasGeometriesOf(const QovRyx::Tree& first, const QovRyx::Tree& further) {
  bool hasAll = true;
  ForEachGeometry(further.GetNodes(), [&](std::uint32_t id, const QovRyx::Geometry&) {
    const auto* entry = first.GetNodes().FindNode(id);
    hasAll = hasAll && entry != nullptr && AsGeometry(*entry) != nullptr;
  });
  return hasAll;
}

/// Returns true if two models that can be loaded must merge without an error.
bool MustMerge(std::uint8_t mode, const QovRyx::Tree& first, const QovRyx::Tree& further) {
  const std::size_t kind = mode % CountModes();
  if (kind == CountModes() - 1)
    return false;  // cae_merge_cs needs more than models that can be loaded
  if (kind < GetKinds().size()) {
    const auto naming = GetKinds()[kind].GetNaming();
    if (!naming) return !HasHighIds(first) && !HasHighIds(further);
    if (*naming == QovRyx::InstanceNaming::Plain && !Accepts([&] {
          QovRyx::CheckSharing(first);
          QovRyx::CheckSharing(further);
        })) {
      return false;
    }
  }
  return HasGeometriesOf(first, further);
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
  const Examined one(first.GetPath());
  const Examined other(second.GetPath());
  const bool areSmall = one.mIsSmall && other.mIsSmall;
  if (one.mIsSound && other.mIsSound && !areSmall) return 0;
  int status = 0;
  {
    const SilentErrors silence;
    status = Merge(data[0], {first.GetPath(), second.GetPath()}, output.GetPath());
  }
  if (areSmall && MustMerge(data[0], one.mTree, other.mTree)) {
    Require(status == kDone, "models that can be read can be merged");
  }
  Require(status == kDone || status == kRefused, "a merge succeeds or is refused");
  if (status == kDone && areSmall) {
    Require(Examined(output.GetPath()).mIsSound, "a merged model can be loaded");
  }
  return 0;
}
