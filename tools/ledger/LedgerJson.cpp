#include "LedgerJson.h"

#include <nlohmann/json.hpp>

namespace Qov::Tools {
namespace {

template <class Rule>
Json RulesJson(const std::map<Rule, std::uint64_t>& counts) {
  Json rules = Json::array();
  for (const auto& [rule, count] : counts) {
    rules.push_back({{"rule", NameOf(rule)}, {"count", count}});
  }
  return rules;
}

Json PairsJson(const std::vector<NamePair>& pairs) {
  Json list = Json::array();
  for (const NamePair& pair : pairs) {
    list.push_back(
        {{"from", JsonText(pair.mFrom)}, {"to", JsonText(pair.mTo)}, {"count", pair.mCount}});
  }
  return list;
}

Json InputJson(const InputLedger& input) {
  Json items = Json::array();
  for (std::size_t i = 0; i < kNumItems; ++i) {
    const InputTally& tally = input.mTallies[i];
    if (tally == InputTally{}) continue;
    items.push_back({{"item", NameOf(static_cast<Item>(i))},
                     {"found", tally.mFound},
                     {"copied", tally.mCopied},
                     {"dropped", RulesJson(tally.mDropped)}});
  }
  return {{"path", JsonText(input.mPath)},
          {"items", items},
          {"renamed", PairsJson(input.mRenamed)},
          {"linked", PairsJson(input.mLinked)}};
}

Json OutputJson(const Ledger& ledger) {
  Json items = Json::array();
  for (std::size_t i = 0; i < kNumItems; ++i) {
    const OutputTally& tally = ledger.mOutput[i];
    if (tally == OutputTally{}) continue;
    items.push_back({{"item", NameOf(static_cast<Item>(i))},
                     {"found", tally.mFound},
                     {"copied", tally.mCopied},
                     {"made", RulesJson(tally.mMade)}});
  }
  return items;
}

}  // namespace

Json LedgerJson(const Ledger& ledger) {
  Json inputs = Json::array();
  for (const InputLedger& input : ledger.mInputs) inputs.push_back(InputJson(input));
  return {{"inputs", inputs}, {"output", OutputJson(ledger)}};
}

}  // namespace Qov::Tools
