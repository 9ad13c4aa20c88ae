#include "InputGroups.h"

#include <fmt/format.h>

#include <unordered_map>

#include "Qov/Ryx/InstanceNames.h"

namespace Qov::Tools {
namespace {

/// Returns a text that is the same for the same names without instance parts.
std::string KeyOf(const std::vector<NamePair>& pairs) {
  const auto base = [](const std::string& name) {
    return name.substr(0, name.rfind(QovRyx::kInstanceSeparator));
  };
  std::string key;
  for (const NamePair& pair : pairs) {
    const std::string from = base(pair.mFrom);
    const std::string to = base(pair.mTo);
    key += fmt::format("{}:{}{}:{}{} ", from.size(), from, to.size(), to, pair.mCount);
  }
  return key;
}

/// Returns a text that is the same for inputs with the same ledger.
std::string KeyOf(const InputLedger& input) {
  std::string key;
  for (const InputTally& tally : input.mTallies) {
    key += fmt::format("{} {}", tally.mFound, tally.mCopied);
    for (const auto& [rule, count] : tally.mDropped) {
      key += fmt::format(" {}:{}", static_cast<int>(rule), count);
    }
    key += ';';
  }
  return key + KeyOf(input.mRenamed) + ';' + KeyOf(input.mLinked);
}

}  // namespace

std::vector<InputGroup> GroupInputs(const std::vector<InputLedger>& inputs, LedgerDetail detail) {
  std::vector<InputGroup> groups;
  std::unordered_map<std::string, std::size_t> known;
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    const bool canGroup = detail == LedgerDetail::Summary && !IsViewPointFile(inputs[i].mPath);
    const std::size_t like = canGroup ? known.try_emplace(KeyOf(inputs[i]), i).first->second : i;
    if (like != i && !groups.back().IsNew() && groups.back().mLike == like) {
      ++groups.back().mCount;
    } else {
      groups.push_back({i, 1, like});
    }
  }
  return groups;
}

std::vector<std::size_t> NumberModels(const std::vector<InputLedger>& inputs) {
  std::vector<std::size_t> numbers;
  std::size_t numModels = 0;
  for (const InputLedger& input : inputs) {
    numbers.push_back(IsViewPointFile(input.mPath) ? 0 : ++numModels);
  }
  return numbers;
}

}  // namespace Qov::Tools
