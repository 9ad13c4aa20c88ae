#pragma once

#include "ShardPlan.h"

namespace Qov::Tools {

/// Writes the scripts of a divided merge, the lists of its inputs and the folders of its results
/// into its folder. If that fails, nothing is left.
void WriteShardScripts(const ShardedMerge& merge, const ShardPlan& shards);

}  // namespace Qov::Tools
