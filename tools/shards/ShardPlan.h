#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Plan.h"
#include "ShardedMerge.h"

namespace Qov::Tools {

/// Models that follow each other and are merged into one part.
struct Shard {
  std::size_t mFirst = 0;  ///< Position among the models.
  std::size_t mCount = 0;
  std::uint64_t mBytes = 0;  ///< Sizes of the files.
};

/// A merge that is divided into parts, with the choices that are made over all inputs.
struct ShardPlan {
  std::string mFolder;  ///< Absolute.
  QovRyx::MergeMode mMode = QovRyx::MergeMode::Datasets;
  QovRyx::MergedNames mNames = QovRyx::MergedNames::Keep;
  std::vector<std::string> mModels;
  std::vector<std::string> mParts;  ///< The part that the names of each model get.
  std::vector<Shard> mShards;
};

/// Divides the models of a merge into at most `number` shards of about equal sizes. `plan` is that
/// of the merge and has no obstacles. Raises MiscellaneousError if the merge cannot be divided.
ShardPlan DivideMerge(const ShardedMerge& merge, const MergePlan& plan, std::size_t number,
                      const std::string& folder);

/// Raises ElementExists unless `folder` can be made or is an empty folder.
void CheckShardFolder(const std::string& folder);

}  // namespace Qov::Tools
