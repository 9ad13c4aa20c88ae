#include "Select.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <set>
#include <unordered_map>

#include "ArrayNames.h"
#include "Qov/Ryx/ModelEdits.h"
#include "Qov/Util/Raise.h"
#include "SelectionWords.h"
#include "diagnostics/Printable.h"

namespace QovRyx {
namespace {

constexpr const char* kSource = "include/Qov/Ryx/Selection";

[[noreturn]] void RaiseNotFound(const std::string& text) {
  Qov::Util::Raise(kSource, Qov::Util::Exception::ErrorType::ElementNotFound, text);
}

/// The lists for one kind of items: those that are chosen, and those that are not.
struct WordLists {
  SelectionWords mWith;
  SelectionWords mWithout;

  WordLists(const std::vector<std::string>& with, const std::vector<std::string>& without,
            const char* noun)
      : mWith(with, noun), mWithout(without, noun) {}

  void NoteUnused(std::vector<std::string>& notes) const {
    mWith.NoteUnused(" chooses nothing", notes);
    mWithout.NoteUnused(" leaves out nothing", notes);
  }
};

/// Decides about the nodes of a model.
class NodeChoice {
 public:
  NodeChoice(const NodeTree& nodes, WordLists& lists) : mNodes(nodes), mLists(lists) {
    for (const auto& [id, entry] : nodes) mStates[id] = Test(entry);
    for (const auto& [id, entry] : nodes) Inherit(id);
  }

  /// Returns the ids of the nodes that are left out.
  std::set<std::uint32_t> FindLeftOut() const {
    const std::set<std::uint32_t> kept = FindKept();
    std::set<std::uint32_t> leftOut;
    for (const auto& [id, entry] : mNodes) {
      if (!kept.contains(id)) leftOut.insert(id);
    }
    return leftOut;
  }

 private:
  struct State {
    bool mIsChosen = false;   ///< It, or a node above it.
    bool mIsLeftOut = false;  ///< It, or a node above it.
    bool mIsComplete = false;
  };

  State Test(const NodeTree::Node& entry) {
    const std::string number = std::to_string(entry.mId);
    const auto fits = [&](const std::string& word) {
      return word == number || (entry.mData && FitsName(word, entry.mData->GetName()));
    };
    State state;
    state.mIsChosen = mLists.mWith.IsEmpty() || mLists.mWith.Test(fits);
    state.mIsLeftOut = entry.mId != NodeTree::kRootId && mLists.mWithout.Test(fits);
    return state;
  }

  /// Completes the states of a node and of those above it. The parents of damaged files may form a
  /// cycle, which ends at the node where it began.
  void Inherit(std::uint32_t id) {
    std::vector<std::uint32_t> path;
    std::set<std::uint32_t> seen;
    for (auto state = mStates.find(id); state != mStates.end() && !state->second.mIsComplete;
         state = mStates.find(id)) {
      if (!seen.insert(id).second) break;
      path.push_back(id);
      id = mNodes.GetReqNode(id).mParent;
    }
    const auto found = mStates.find(id);
    State above = found == mStates.end() ? State() : found->second;
    for (auto below = path.rbegin(); below != path.rend(); ++below) {
      State& state = mStates[*below];
      state.mIsChosen = state.mIsChosen || above.mIsChosen;
      state.mIsLeftOut = state.mIsLeftOut || above.mIsLeftOut;
      state.mIsComplete = true;
      above = state;
    }
  }

  std::set<std::uint32_t> FindKept() const {
    std::set<std::uint32_t> kept{NodeTree::kRootId};
    for (const auto& [id, state] : mStates) {
      if (!state.mIsChosen || state.mIsLeftOut) continue;
      const NodeTree::Node* entry = mNodes.FindNode(id);
      while (entry != nullptr && kept.insert(entry->mId).second) {
        entry = mNodes.FindNode(entry->mParent);
      }
    }
    return kept;
  }

  const NodeTree& mNodes;
  WordLists& mLists;
  std::unordered_map<std::uint32_t, State> mStates;
};

/// Decides about the results of a model.
class ResultChoice {
 public:
  explicit ResultChoice(const Selection& selection)
      : mResults(selection.mResults, selection.mWithoutResults, "result"),
        mInstances(selection.mInstances, selection.mWithoutInstances, "instance") {}

  /// Decides about all results of a geometry.
  void Add(std::uint32_t id, const Geometry& geometry) {
    std::vector<bool>& isLeftOut = mIsLeftOut[id];
    isLeftOut.reserve(geometry.GetVariables().size());
    for (const auto& result : geometry.GetVariables()) isLeftOut.push_back(IsLeftOut(result.mName));
  }

  bool IsLeftOut(const ResultPlace& place) const {
    return mIsLeftOut.at(place.mNode)[place.mPosition];
  }
  void RequireAny() const {
    mResults.mWith.RequireAny();
    mInstances.mWith.RequireAny();
  }
  void NoteUnused(std::vector<std::string>& notes) const {
    mResults.NoteUnused(notes);
    mInstances.NoteUnused(notes);
  }

 private:
  bool IsLeftOut(const std::string& whole) {
    const ArrayName name = SplitName(whole);
    const std::string base(name.mBase);
    const std::string instance(name.mInstance);
    const bool isMesh = IsMeshBase(base);
    const auto fits = [&](const std::string& word) {
      return FitsName(word, base) || FitsName(word, whole);
    };
    const auto fitsExactly = [&](const std::string& word) { return word == base || word == whole; };
    const auto fitsInstance = [&](const std::string& word) { return FitsName(word, instance); };
    // All words are tested, so that those that fit nothing are known.
    bool isChosen = mResults.mWith.IsEmpty();
    if (mResults.mWith.Test(fits) || isMesh) isChosen = true;
    bool isLeftOut = isMesh ? mResults.mWithout.Test(fitsExactly) : mResults.mWithout.Test(fits);
    if (!instance.empty()) {
      if (!mInstances.mWith.Test(fitsInstance) && !mInstances.mWith.IsEmpty()) isChosen = false;
      if (mInstances.mWithout.Test(fitsInstance)) isLeftOut = true;
    }
    return isLeftOut || !isChosen;
  }

  WordLists mResults;
  WordLists mInstances;
  std::map<std::uint32_t, std::vector<bool>> mIsLeftOut;
};

}  // namespace

SelectionCounts ApplySelection(Tree& tree, const Selection& selection) {
  SelectionCounts counts;
  if (selection.ChoosesAll()) return counts;
  NodeTree& nodes = tree.GetNodes();
  WordLists lists(selection.mNodes, selection.mWithoutNodes, "node");
  const std::set<std::uint32_t> leftOut = NodeChoice(nodes, lists).FindLeftOut();
  lists.mWith.RequireAny();
  if (!leftOut.empty() && leftOut.size() + 1 == nodes.GetSize()) {
    RaiseNotFound("The selection leaves out all nodes");
  }
  ResultChoice results(selection);
  ForEachGeometry(nodes, [&](std::uint32_t id, const Geometry& geometry) {
    if (!leftOut.contains(id)) results.Add(id, geometry);
  });
  results.RequireAny();
  lists.NoteUnused(counts.mNotes);
  results.NoteUnused(counts.mNotes);
  const RemovedContent removed = RemoveContent(
      nodes, leftOut,
      [&](const ResultPlace& place, const auto&) { return results.IsLeftOut(place); });
  counts.mNodesLeftOut = removed.mNodes;
  counts.mResultsLeftOut = removed.mResults;
  counts.mLinksReplaced = removed.mLinksReplaced;
  return counts;
}

}  // namespace QovRyx
