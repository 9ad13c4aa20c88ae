#pragma once

#include "Json.h"
#include "Output.h"
#include "ShardPlan.h"

namespace Qov::Tools {

/// Prints the folder of a divided merge, the shards and the next commands.
void PrintShards(const ShardPlan& shards, std::size_t wanted, Output& output);

/// Returns the shards as JSON (docs/json/plan.md).
Json ShardsJson(const ShardPlan& shards);

}  // namespace Qov::Tools
