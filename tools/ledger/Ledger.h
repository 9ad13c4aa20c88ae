#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "MergeRequest.h"

/// The ledger of a merge: the numbers of items that each input holds, that are copied into the
/// output, that are dropped, and that the merge makes. Each drop has a rule.
namespace Qov::Tools {

/// A kind of thing that is counted.
enum class Item : std::size_t {
  Group,
  Shape,
  Geometry,
  NodeSets,
  UnknownNode,
  EmptyNode,  ///< An entry of the tree without content.
  Result,     ///< Has its own values.
  LinkedResult,
  Set,
  CurrentView,
  ViewPath,
  PathView,  ///< A view point of a path.
  Sequencer,
  HistoryEntry,
};
inline constexpr std::size_t kNumItems = 14;
template <class T>
using PerItem = std::array<T, kNumItems>;

/// The rule by which an item of an input is not copied into the output.
enum class DropRule {
  FurtherStructure,
  NoInstancePart,
  NoGeometryInFirst,
  SharedName,
  LinkedToItself,
  LinkReplaced,
  Unlinked,
  FurtherViews,
  ViewReplaced,
  SequencerReplaced,
  FurtherHistory,
  NotSelected,
  StoredOnce,
  JoinedRoot,
  ViewsNotTaken,
};

/// The rule by which the merge makes an item that no input holds.
enum class MadeRule {
  MergeGroup,
  SharedResult,
  LinkedToItself,
  LinkReplaced,
  Unlinked,
  HistoryEntry,
  StoredOnce,
};

/// Returns a short name, the same in text and JSON.
const char* NameOf(Item item);
const char* NameOf(DropRule rule);
const char* NameOf(MadeRule rule);
/// Returns a phrase that explains the name.
const char* Explain(DropRule rule);
const char* Explain(MadeRule rule);

/// Returns the sum of the counts of all rules.
template <class Rule>
std::uint64_t Sum(const std::map<Rule, std::uint64_t>& counts) {
  std::uint64_t sum = 0;
  for (const auto& [rule, count] : counts) sum += count;
  return sum;
}

/// The numbers of items of one kind in an input.
struct InputTally {
  std::uint64_t mFound = 0;
  std::uint64_t mCopied = 0;
  std::map<DropRule, std::uint64_t> mDropped;

  bool AddsUp() const;
  friend bool operator==(const InputTally&, const InputTally&) = default;
};

/// The numbers of items of one kind in the output.
struct OutputTally {
  std::uint64_t mCopied = 0;
  std::map<MadeRule, std::uint64_t> mMade;
  std::uint64_t mFound = 0;

  bool AddsUp() const;
  friend bool operator==(const OutputTally&, const OutputTally&) = default;
};

/// Two names of results, and how often they occur together. For a renamed result: the old and the
/// new name. For a link: the result with the values, and the result that shares them.
struct NamePair {
  std::string mFrom;
  std::string mTo;
  std::uint64_t mCount = 0;

  friend bool operator==(const NamePair&, const NamePair&) = default;
};

struct InputLedger {
  std::string mPath;
  PerItem<InputTally> mTallies;
  std::vector<NamePair> mRenamed;  ///< Old and new names, in ascending order.
  std::vector<NamePair> mLinked;   ///< Links that the merge made when it took this input.

  InputTally& operator[](Item item) { return mTallies[static_cast<std::size_t>(item)]; }
  friend bool operator==(const InputLedger&, const InputLedger&) = default;
};

struct Ledger {
  MergeMode mMode;
  std::vector<InputLedger> mInputs;
  PerItem<OutputTally> mOutput;

  /// Returns true if found = copied + dropped in each input, and found = copied + made in the
  /// output.
  bool AddsUp() const;
  OutputTally& OutputOf(Item item) { return mOutput[static_cast<std::size_t>(item)]; }
  friend bool operator==(const Ledger&, const Ledger&) = default;
};

}  // namespace Qov::Tools
