#include "ExpectSelection.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "ExpectedLinks.h"
#include "MergedNames.h"
#include "diagnostics/Pattern.h"
#include "merge/ArrayNames.h"

namespace Qov::Tools {
namespace {

using Words = std::vector<std::string>;
using QovRyx::Geometry;
using QovRyx::NodeTree;
using QovRyx::Selection;

bool Fits(const Words& words, const std::string& name) {
  return std::any_of(words.begin(), words.end(), [&name](const std::string& word) {
    return word == name || Util::MatchesPattern(name, word);
  });
}

bool IsListed(const Words& words, const std::string& name) {
  return std::find(words.begin(), words.end(), name) != words.end();
}

bool IsChosen(const Selection& selection, const std::string& name) {
  const std::string instance = InstancePartOf(name);
  const std::string base(QovRyx::SplitName(name).mBase);
  if (!instance.empty()) {
    if (!selection.mInstances.empty() && !Fits(selection.mInstances, instance)) return false;
    if (Fits(selection.mWithoutInstances, instance)) return false;
  }
  if (QovRyx::IsMeshBase(base)) {
    return !IsListed(selection.mWithoutResults, base) && !IsListed(selection.mWithoutResults, name);
  }
  if (Fits(selection.mWithoutResults, base) || Fits(selection.mWithoutResults, name)) return false;
  return selection.mResults.empty() || Fits(selection.mResults, base) ||
         Fits(selection.mResults, name);
}

/// Finds the nodes that stay, and repairs the links of the tree around those that do not.
class NodeSelection {
 public:
  NodeSelection(const Selection& selection, ExpectedModel& model)
      : mSelection(selection), mModel(model) {}

  std::set<std::uint32_t> FindKept() {
    std::set<std::uint32_t> kept{NodeTree::kRootId};
    for (const auto& [id, node] : mModel.mNodes) {
      bool isChosen = mSelection.mNodes.empty();
      bool isLeftOut = false;
      for (const std::uint32_t above : PathOf(id)) {
        isChosen = isChosen || IsNamed(mSelection.mNodes, above);
        isLeftOut =
            isLeftOut || (above != NodeTree::kRootId && IsNamed(mSelection.mWithoutNodes, above));
      }
      if (!isChosen || isLeftOut) continue;
      for (const std::uint32_t above : PathOf(id)) kept.insert(above);
    }
    return kept;
  }

 private:
  /// Returns a node and those above it.
  std::vector<std::uint32_t> PathOf(std::uint32_t id) const {
    std::vector<std::uint32_t> path;
    std::set<std::uint32_t> seen;
    auto node = mModel.mNodes.find(id);
    while (node != mModel.mNodes.end() && seen.insert(node->first).second) {
      path.push_back(node->first);
      node = mModel.mNodes.find(node->second.mEntry.mParent);
    }
    return path;
  }
  bool IsNamed(const Words& words, std::uint32_t id) const {
    if (IsListed(words, std::to_string(id))) return true;
    const ExpectedNode& node = mModel.mNodes.at(id);
    if (node.mpSource == nullptr) return Fits(words, "Merge");
    return node.GetContent() != nullptr && Fits(words, node.GetContent()->GetName());
  }

  const Selection& mSelection;
  ExpectedModel& mModel;
};

/// Takes a node out of the list of its siblings.
void Unhook(ExpectedModel& model, const NodeTree::Node& entry) {
  const auto edit = [&model](std::uint32_t id, std::uint32_t NodeTree::Node::*member,
                             std::uint32_t from, std::uint32_t to) {
    const auto node = model.mNodes.find(id);
    if (node == model.mNodes.end() || node->second.mEntry.*member != from) return;
    node->second.mEntry.*member = to;
  };
  edit(entry.mParent, &NodeTree::Node::mFirstChild, entry.mId, entry.mNextSibling);
  edit(entry.mParent, &NodeTree::Node::mLastChild, entry.mId, entry.mPreviousSibling);
  edit(entry.mPreviousSibling, &NodeTree::Node::mNextSibling, entry.mId, entry.mNextSibling);
  edit(entry.mNextSibling, &NodeTree::Node::mPreviousSibling, entry.mId, entry.mPreviousSibling);
}

/// Removes results, and lets links follow those that stay.
class ResultSelection {
 public:
  explicit ResultSelection(ExpectedModel& model) : mModel(model), mFollower(FollowLinks(model)) {}

  void Keep(std::uint32_t id, std::size_t position) {
    const ExpectedResult& result = mModel.mNodes.at(id).mResults[position];
    mPlaces[&result] = {id, mNumKept[id]++};
  }

  void Apply() {
    for (auto& [id, node] : mModel.mNodes) {
      for (ExpectedResult& result : node.mResults) {
        if (mPlaces.contains(&result) && result.mLink.HasTarget()) FindTarget(result);
      }
    }
    for (auto& [id, node] : mModel.mNodes) {
      std::vector<ExpectedResult> kept;
      for (ExpectedResult& result : node.mResults) {
        if (!mPlaces.contains(&result)) {
          Drop(mModel, result);
          continue;
        }
        const auto target = mTargets.find(&result);
        if (target != mTargets.end()) Relink(result, target->second);
        kept.push_back(std::move(result));
      }
      node.mResults = std::move(kept);
    }
  }

  static void Drop(ExpectedModel& model, const ExpectedResult& result) {
    if (result.mpSource == nullptr) return;  // made by the merge
    const bool wasLinked = result.mpSource->mLink.IsLinked();
    model.Drop(result.mInput, wasLinked ? Item::LinkedResult : Item::Result, DropRule::NotSelected);
  }

 private:
  /// Finds the result whose values a link has, before any link is changed.
  void FindTarget(const ExpectedResult& result) {
    const ExpectedResult* owner = mFollower.FindOwner(result);
    if (owner == nullptr) {
      mTargets[&result] = {};
    } else if (const auto place = mPlaces.find(owner); place != mPlaces.end()) {
      mTargets[&result] = {place->second, nullptr};
    } else {
      mTargets[&result] = {std::nullopt, owner->mpValues};
    }
  }

  struct Target {
    std::optional<QovRyx::ResultPlace> mPlace;  ///< Of an owner that stays.
    const Result* mpValues = nullptr;           ///< Of an owner that does not stay.
  };

  static void Relink(ExpectedResult& result, const Target& target) {
    if (target.mPlace) {
      result.mLink.MoveTo(*target.mPlace);
    } else if (target.mpValues != nullptr) {
      result.mLink = {};
      result.mpValues = target.mpValues;
      result.mKindHighByte = target.mpValues->mKindHighByte;
      if (target.mpValues->HoldsUnsigned() && !Geometry::IsIntegerKind(result.mKind)) {
        result.mKindHighByte = Geometry::kUnsignedKindHighByte;
      }
      result.mMade = MadeRule::Unlinked;
    } else {
      result.mLink.LoseTarget();
      result.mMade = MadeRule::LinkReplaced;  // by another link without values
    }
  }

  ExpectedModel& mModel;
  QovRyx::LinkFollower<ExpectedResult> mFollower;
  std::map<std::uint32_t, std::uint32_t> mNumKept;
  std::map<const ExpectedResult*, QovRyx::ResultPlace> mPlaces;  ///< Of the results that stay.
  std::map<const ExpectedResult*, Target> mTargets;
};

void DropNode(ExpectedModel& model, const ExpectedNode& node) {
  Unhook(model, node.mEntry);
  if (node.mpSource != nullptr) {
    model.Drop(node.mInput, ItemOf(*node.mpSource), DropRule::NotSelected);
  }
  model.Drop(node.mInput, Item::Set, DropRule::NotSelected, node.mNumSoundSets);
}

}  // namespace

void ExpectSelection(const Selection& selection, ExpectedModel& model) {
  if (selection.ChoosesAll()) return;
  const std::set<std::uint32_t> kept = NodeSelection(selection, model).FindKept();
  ResultSelection results(model);
  for (const auto& [id, node] : model.mNodes) {
    if (!kept.contains(id)) continue;
    for (std::size_t i = 0; i < node.mResults.size(); ++i) {
      if (IsChosen(selection, node.mResults[i].mName)) results.Keep(id, i);
    }
  }
  results.Apply();
  for (auto node = model.mNodes.begin(); node != model.mNodes.end();) {
    if (kept.contains(node->first)) {
      ++node;
      continue;
    }
    DropNode(model, node->second);
    node = model.mNodes.erase(node);
  }
}

}  // namespace Qov::Tools
