#include "ShardReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "Plural.h"
#include "ShellText.h"
#include "ValueText.h"

namespace Qov::Tools {

void PrintShards(const ShardPlan& shards, std::size_t wanted, Output& output) {
  const std::size_t number = shards.mShards.size();
  const auto largest =
      std::max_element(shards.mShards.begin(), shards.mShards.end(),
                       [](const Shard& a, const Shard& b) { return a.mBytes < b.mBytes; });
  const std::string& path = shards.mFolder;
  const bool isPrintable = Escape(path, output.GetStyle()) == path;
  const std::string folder = isPrintable ? QuoteForShell(path) : Escape(path, output.GetStyle());
  output.Line();
  if (number < wanted) {
    output.Line(fmt::format("Only {}, because there are {}", Plural(number, "shard"),
                            Plural(shards.mModels.size(), "model")));
  }
  output.Line(fmt::format("Wrote {}: {}, at most {} with {} each, a join and a verification",
                          folder, Plural(number, "shard"), SizeText(largest->mBytes),
                          Plural(largest->mCount, "model")));
  output.Line("Start them with Slurm:  sh " + folder + "/submit");
  output.Line("or on this machine:     sh " + folder + "/run-here");
}

Json ShardsJson(const ShardPlan& shards) {
  Json list = Json::array();
  for (const Shard& shard : shards.mShards) {
    list.push_back(
        {{"first", shard.mFirst + 1}, {"models", shard.mCount}, {"bytes", shard.mBytes}});
  }
  return {{"folder", JsonText(shards.mFolder)}, {"list", std::move(list)}};
}

}  // namespace Qov::Tools
