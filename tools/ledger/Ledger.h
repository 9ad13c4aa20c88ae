#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "MergeRequest.h"

/// The books of a merge: what each input holds, what of it comes into the output, what does not
/// and why, and what the merge makes of its own.
namespace Qov::Tools {

/// What is counted.
enum class Item : std::size_t {
  Group,
  Shape,
  Geometry,
  NodeSets,
  UnknownNode,
  EmptyNode,  ///< An entry of the tree that carries nothing.
  Result,     ///< With values of its own.
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

/// Why something of an input does not come into the output as it is.
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
};

/// Where something of the output comes from that no input holds.
enum class MadeRule {
  MergeGroup,
  SharedResult,
  LinkedToItself,
  LinkReplaced,
  Unlinked,
  HistoryEntry,
};

/// A short name, the same in text and JSON.
const char* NameOf(Item item);
const char* NameOf(DropRule rule);
const char* NameOf(MadeRule rule);
/// A sentence that explains the name.
const char* Explain(DropRule rule);
const char* Explain(MadeRule rule);

/// One kind of thing in an input.
struct InputTally {
  std::uint64_t mFound = 0;
  std::uint64_t mCopied = 0;
  std::map<DropRule, std::uint64_t> mDropped;

  bool AddsUp() const;
  friend bool operator==(const InputTally&, const InputTally&) = default;
};

/// One kind of thing in the output.
struct OutputTally {
  std::uint64_t mCopied = 0;
  std::map<MadeRule, std::uint64_t> mMade;
  std::uint64_t mFound = 0;

  bool AddsUp() const;
  friend bool operator==(const OutputTally&, const OutputTally&) = default;
};

/// A result's name that leads to another one, and how often. Of a link: the result with the
/// values, and the one that shares them.
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
  MergeMode mMode = MergeMode::Nothing;
  std::vector<InputLedger> mInputs;
  PerItem<OutputTally> mOutput;

  /// Found = copied + dropped in every input, and found = copied + made in the output.
  bool AddsUp() const;
  OutputTally& OutputOf(Item item) { return mOutput[static_cast<std::size_t>(item)]; }
  friend bool operator==(const Ledger&, const Ledger&) = default;
};

}  // namespace Qov::Tools
