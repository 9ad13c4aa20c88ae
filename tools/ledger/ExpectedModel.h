#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "InputFile.h"
#include "Ledger.h"
#include "Qov/Ryx/Group.h"

/// The expected output of a merge, item by item, each with the place in the inputs that it comes
/// from. A plan counts the items. A verification compares them with an output and clears `mSound`
/// of those that the output lacks or that differ.
namespace Qov::Tools {

using Result = QovRyx::Geometry::VarStruct;

struct ExpectedResult {
  std::string mName;
  std::size_t mInput = 0;            ///< The input that it comes from, or that it was made for.
  const Result* mpSource = nullptr;  ///< Null if the merge makes it.
  const Result* mpFields = nullptr;  ///< The result that flag and attributes are taken from.
  const QovRyx::Group* mpTimedGroup = nullptr;  ///< The group whose time it gets, or null.
  std::uint32_t mKind = 0;
  std::uint32_t mKindHighByte = 0;
  const Result* mpValues = nullptr;  ///< The owner of the values; null if linked or without values.
  QovRyx::ResultLink mLink;
  std::optional<MadeRule> mMade;
  bool mSound = true;
  const Result* mpFound = nullptr;  ///< The result of the output that it is matched with.
};

struct ExpectedNode {
  std::size_t mInput = 0;
  const QovRyx::NodeTree::Node* mpSource = nullptr;  ///< Null for the group that holds the models.
  QovRyx::NodeTree::Node mEntry;                     ///< Id and tree links, without content.
  std::vector<ExpectedResult> mResults;              ///< Results of a geometry.
  bool mSound = true;
  std::uint64_t mNumSoundSets = 0;

  const QovRyx::Node* GetContent() const { return mpSource ? mpSource->mData.get() : nullptr; }
  bool IsGeometry() const;
};

/// A part of the views or the history that comes from an input.
template <class T>
struct Expected {
  std::size_t mInput = 0;
  const T* mpSource = nullptr;
  bool mSound = true;
};

struct ExpectedPath : Expected<QovRyx::ViewPointPath> {
  std::uint64_t mNumSoundViews = 0;
};

struct ExpectedModel {
  /// Counts of the items that each input holds and that the merge drops. MakeLedger adds the counts
  /// of the output.
  Ledger mLedger;
  /// A result with values may be a link to a result with equal values in the output.
  bool mMayStoreOnce = false;
  std::map<std::uint32_t, ExpectedNode> mNodes;
  std::optional<Expected<QovRyx::ViewPoint>> mCurrentView;
  std::vector<ExpectedPath> mPaths;
  std::optional<Expected<QovRyx::SequencerData>> mSequencer;
  std::vector<Expected<QovRyx::ModifierInfo>> mHistory;
  std::vector<QovRyx::ModifierInfo> mNewHistory;  ///< Entries of the merge, without their dates.
  std::uint64_t mNumSoundNewHistory = 0;

  /// Returns the result at a place, or null.
  const ExpectedResult* FindResult(const QovRyx::ResultPlace& place) const;
  /// Returns the result that is the target of a linked result, or null.
  const ExpectedResult* FindTarget(const ExpectedResult& linked) const;
  /// Adds dropped items to the ledger of an input.
  void Drop(std::size_t input, Item item, DropRule rule, std::uint64_t count = 1);
};

/// Returns a node of an input with its results. Names, ids and links are those of the input.
ExpectedNode ExpectNode(std::size_t input, const QovRyx::NodeTree::Node& entry);

}  // namespace Qov::Tools
