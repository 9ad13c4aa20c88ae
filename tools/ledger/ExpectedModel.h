#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "InputFile.h"
#include "Ledger.h"

/// What a merge ought to put into its output, item by item, each with the place in the inputs
/// that it comes from. A plan counts it; a recount holds an output against it, and takes away what
/// is not there: all is sound at first.
namespace Qov::Tools {

using Result = QovRyx::Geometry::VarStruct;

struct ExpectedResult {
  std::string mName;
  std::size_t mInput = 0;            ///< The input that it comes from, or was made for.
  const Result* mpSource = nullptr;  ///< Null if the merge made it.
  const Result* mpFields = nullptr;  ///< Where flag and attributes come from.
  std::uint32_t mKind = 0;
  std::uint32_t mKindHighByte = 0;
  const Result* mpValues = nullptr;  ///< Not linked: where the values are; null: there are none.
  QovRyx::ResultLink mLink;
  std::optional<MadeRule> mMade;
  bool mSound = true;               ///< Cleared if an output lacks it.
  const Result* mpFound = nullptr;  ///< The result of an output that it is matched with.
};

struct ExpectedNode {
  std::size_t mInput = 0;
  const QovRyx::NodeTree::Node* mpSource = nullptr;  ///< Null: the group that holds the models.
  QovRyx::NodeTree::Node mLinks;                     ///< Carries nothing.
  std::vector<ExpectedResult> mResults;              ///< Of a geometry.
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
  /// Found and dropped of each input; what comes into the output is added by TakeStock.
  Ledger mLedger;
  std::map<std::uint32_t, ExpectedNode> mNodes;
  std::optional<Expected<QovRyx::ViewPoint>> mCurrentView;
  std::vector<ExpectedPath> mPaths;
  std::optional<Expected<QovRyx::SequencerData>> mSequencer;
  std::vector<Expected<QovRyx::ModifierInfo>> mHistory;
  std::vector<QovRyx::ModifierInfo> mNewHistory;  ///< What the merge adds, without the dates.
  std::uint64_t mNumSoundNewHistory = 0;

  /// Returns the result at a place, or null.
  const ExpectedResult* FindResult(const QovRyx::ResultPlace& place) const;
  /// Returns the result that is the target of a linked result, or null.
  const ExpectedResult* FindTarget(const ExpectedResult& linked) const;
  void Drop(std::size_t input, Item item, DropRule rule, std::uint64_t count = 1);
};

/// A reason for which the merge would fail.
struct Obstacle {
  std::string mPath;     ///< The input, or empty.
  std::string mText;     ///< Not escaped.
  std::string mSubject;  ///< A name from a file, as it is there; or empty.
};

/// The output of a merge of inputs that could be read. What keeps them from being merged is added
/// to `obstacles`; the model is then worth nothing.
ExpectedModel ExpectModel(MergeMode mode, const std::vector<InputFile>& inputs,
                          std::vector<Obstacle>& obstacles);

/// The whole ledger: what of the expected model is sound has been copied. `found` is what the
/// output holds; what is expected, if it is not given.
Ledger TakeStock(ExpectedModel& model, const std::vector<InputFile>& inputs,
                 const std::optional<PerItem<std::uint64_t>>& found = std::nullopt);

}  // namespace Qov::Tools
