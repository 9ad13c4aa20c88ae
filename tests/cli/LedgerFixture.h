#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/MergeOptions.h"
#include "ryxFixture.h"
#include "support/RandomModel.h"

namespace Qov::Test {

using Strings = std::vector<std::string>;

/// The options of every kind of merge.
inline const std::vector<Strings> kMergeKinds = [] {
  std::vector<Strings> kinds;
  for (const MergeOptions& options : ListMergeKinds()) kinds.push_back(options.GetNames());
  return kinds;
}();

/// Runs merges, and compares their plans and verifications.
class LedgerTest : public RyxProgram {
 protected:
  static Strings Joined(Strings words, const Strings& more) {
    words.insert(words.end(), more.begin(), more.end());
    return words;
  }

  /// Runs RyxMerge with a new output. Returns its status.
  int Merge(const Strings& options, const Strings& inputs);

  Outcome Plan(const Strings& options, const Strings& inputs) const;
  Outcome Verify(const Strings& options, const Strings& inputs) const;

  /// Expects the plan of a merge to equal the verified ledger of the merge that follows.
  void ExpectAsPlanned(const Strings& options, const Strings& inputs);

  /// Returns the number of items to which a rule applied, in all inputs or in the output.
  static std::uint64_t CountRule(const Tools::Json& ledger, const std::string& rule);

  std::string mOutput = mDir / "out.ryx";
};

/// Returns files with one random structure and different results, whose names overlap in all ways.
class RandomSeries {
 public:
  explicit RandomSeries(std::uint32_t seed) : mSeed(seed), mRandom(seed + 1) {}

  std::string Save(const std::string& path);

 private:
  void AddResult(QovRyx::Geometry& geometry, const std::vector<std::uint32_t>& ids);

  std::uint32_t mSeed;
  RandomModel mRandom;
};

}  // namespace Qov::Test
