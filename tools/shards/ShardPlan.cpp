#include "ShardPlan.h"

#include <algorithm>
#include <filesystem>
#include <numeric>
#include <system_error>
#include <utility>

#include "Qov/Util/Raise.h"
#include "diagnostics/Printable.h"

namespace Qov::Tools {
namespace {

namespace fs = std::filesystem;
using ErrorType = Util::Exception::ErrorType;

constexpr const char* kSource = "tools/shards/ShardPlan";

std::uint64_t SizeOf(const std::string& path) {
  std::error_code ignored;
  const std::uintmax_t size = fs::file_size(path, ignored);
  return ignored ? 0 : size;
}

/// Cuts a list of models where the sum of their sizes passes the next fraction of the total.
std::vector<Shard> Divide(const std::vector<std::string>& models, std::size_t number) {
  std::vector<std::uint64_t> sizes;
  sizes.reserve(models.size());
  for (const std::string& model : models) sizes.push_back(SizeOf(model));
  const auto total = static_cast<double>(std::accumulate(sizes.begin(), sizes.end(), 0ULL));
  std::vector<Shard> shards;
  double sum = 0;
  for (std::size_t i = 0; i < models.size(); ++i) {
    const double end = total * static_cast<double>(shards.size()) / static_cast<double>(number);
    const bool areNeeded = models.size() - i == number - shards.size();
    const double middle = sum + static_cast<double>(sizes[i]) / 2;
    if (shards.empty() || areNeeded || (shards.size() < number && middle >= end)) {
      shards.push_back({i, 0, 0});
    }
    ++shards.back().mCount;
    shards.back().mBytes += sizes[i];
    sum += static_cast<double>(sizes[i]);
  }
  return shards;
}

[[noreturn]] void Refuse(const std::string& text) {
  Util::Raise(kSource, ErrorType::MiscellaneousError, text);
}

/// Refuses models whose views cannot be read from a part any more: the older builds stored some
/// records in another form, and only a file that they wrote last is known to hold that form.
void CheckViewWriters(const ShardedMerge& merge, const MergePlan& plan) {
  const QovRyx::MergedViews views = merge.GetRequest().mViews;
  for (const InputFile& input : plan.mInputs) {
    const bool isTaken = views == QovRyx::MergedViews::All || input.mNumber == 1;
    if (input.mIsViewFile || !isTaken || views == QovRyx::MergedViews::None) continue;
    const auto& history = input.mpTree->GetModifiers();
    if (history.empty() || !QovRyx::IsLegacyWriter(history.back())) continue;
    Refuse("the views of " + Util::Quote(input.mPath) +
           " cannot be merged in parts, because an old program wrote them: merge without shards, "
           "or add --views none");
  }
}

}  // namespace

void CheckShardFolder(const std::string& folder) {
  if (folder.empty()) Refuse("--slurm needs the name of a folder");
  const fs::file_status status = fs::symlink_status(folder);
  if (!fs::exists(status)) return;
  if (fs::is_directory(folder) && fs::is_empty(folder)) return;
  Util::Raise(kSource, ErrorType::ElementExists,
              Util::Quote(folder) +
                  " exists and is not an empty folder: remove it, or name another folder");
}

ShardPlan DivideMerge(const ShardedMerge& merge, const MergePlan& plan, std::size_t number,
                      const std::string& folder) {
  ShardPlan shards;
  shards.mModels = merge.ListInputs(false);
  if (number == 0) Refuse("--shards 0: there must be at least one shard");
  if (shards.mModels.size() < 2) {
    Refuse("there is only one model, which cannot be divided: use ryx merge");
  }
  CheckViewWriters(merge, plan);
  shards.mFolder = fs::absolute(folder).lexically_normal().string();
  shards.mMode = IsInstanceMode(plan.mRequest.mMode) ? QovRyx::MergeMode::Instances
                                                     : QovRyx::MergeMode::Datasets;
  shards.mNames = plan.mRequest.mMode.mNames.value();
  shards.mParts = plan.mRequest.mParts;
  shards.mShards = Divide(shards.mModels, std::min(number, shards.mModels.size()));
  return shards;
}

}  // namespace Qov::Tools
