#include "ExpectDatasets.h"

#include <fmt/format.h>

#include <limits>

namespace Qov::Tools {
namespace {

using QovRyx::NodeTree;
using Entry = NodeTree::Node;
constexpr std::uint32_t kHighestId = std::numeric_limits<std::uint32_t>::max();

std::vector<std::uint32_t*> IdsOf(Entry& entry) {
  return {&entry.mId,          &entry.mParent,     &entry.mPreviousSibling,
          &entry.mNextSibling, &entry.mFirstChild, &entry.mLastChild};
}

/// Adds `base` to the ids of a node. Returns false if one of them would become too high.
bool ShiftIds(Entry& entry, std::uint32_t base) {
  for (std::uint32_t* id : IdsOf(entry)) {
    if (*id == 0) continue;
    if (*id >= kHighestId - base) return false;
    *id += base;
  }
  return true;
}

/// Adds the obstacle that there are not enough ids. Returns false, which callers return.
bool AddIdObstacle(const InputFile& input, const Entry& entry, std::uint32_t base,
                   std::vector<Obstacle>& obstacles) {
  const std::string text =
      fmt::format("the ids of node {} cannot be shifted by {}", entry.mId, base);
  obstacles.push_back({input.mPath, text, entry.mData ? entry.mData->GetName() : ""});
  return false;
}

void ShiftLinks(std::vector<ExpectedResult>& results, std::uint32_t base) {
  for (ExpectedResult& result : results) {
    const auto [node, position] = result.mLink.GetPlace();
    result.mLink.MoveTo({node + base, position});
  }
}

/// Makes the root of an input the last child of the group that holds the models.
void AttachRoot(ExpectedModel& model, Entry& root) {
  Entry& group = model.mNodes[NodeTree::kRootId].mEntry;
  root.mParent = NodeTree::kRootId;
  root.mPreviousSibling = group.mLastChild;
  if (group.mLastChild == 0) {
    group.mFirstChild = root.mId;
  } else {
    model.mNodes[group.mLastChild].mEntry.mNextSibling = root.mId;
  }
  group.mLastChild = root.mId;
}

bool IsMergedDatasets(const InputFile& input) {
  const auto* root = dynamic_cast<const QovRyx::Group*>(
      input.GetNodes().GetReqNode(NodeTree::kRootId).mData.get());
  const QovRyx::Group plain("");
  return root != nullptr && root->GetName() == "Merge" && root->TakesModels() &&
         root->mAttributes.empty() && root->mTranslation == plain.mTranslation &&
         root->mRotation == plain.mRotation && root->mScale == plain.mScale;
}

/// Appends the children of the root of an input, with shifted ids, to those of the group.
void AttachChildren(ExpectedModel& model, const Entry& root, std::uint32_t base) {
  if (root.mFirstChild == 0) return;
  Entry& group = model.mNodes[NodeTree::kRootId].mEntry;
  model.mNodes[root.mFirstChild + base].mEntry.mPreviousSibling = group.mLastChild;
  if (group.mLastChild == 0) {
    group.mFirstChild = root.mFirstChild + base;
  } else {
    model.mNodes[group.mLastChild].mEntry.mNextSibling = root.mFirstChild + base;
  }
  group.mLastChild = root.mLastChild + base;
}

/// Adds the nodes of merged datasets without their root, whose id becomes that of the group.
bool ExpectJoined(ExpectedModel& model, const InputFile& input, std::size_t position,
                  std::vector<Obstacle>& obstacles) {
  const std::uint32_t base = model.mNodes.rbegin()->first - NodeTree::kRootId;
  for (const auto& [id, entry] : input.GetNodes()) {
    if (id == NodeTree::kRootId) {
      model.Drop(position, ItemOf(entry), DropRule::JoinedRoot);
      continue;
    }
    ExpectedNode node = ExpectNode(position, entry);
    const bool isBelowRoot = node.mEntry.mParent == NodeTree::kRootId;
    if (!ShiftIds(node.mEntry, base)) return AddIdObstacle(input, entry, base, obstacles);
    if (isBelowRoot) node.mEntry.mParent = NodeTree::kRootId;
    ShiftLinks(node.mResults, base);
    model.mNodes.emplace(node.mEntry.mId, std::move(node));
  }
  AttachChildren(model, input.GetNodes().GetReqNode(NodeTree::kRootId), base);
  return true;
}

/// Adds the nodes of an input. Returns false if their ids are too high.
bool ExpectDataset(ExpectedModel& model, const InputFile& input, std::size_t position,
                   std::vector<Obstacle>& obstacles) {
  const std::uint32_t base = model.mNodes.rbegin()->first;
  for (const auto& [id, entry] : input.GetNodes()) {
    ExpectedNode node = ExpectNode(position, entry);
    if (!ShiftIds(node.mEntry, base)) return AddIdObstacle(input, entry, base, obstacles);
    if (node.mEntry.mParent == 0) node.mEntry.mParent = NodeTree::kRootId;
    ShiftLinks(node.mResults, base);
    if (id == NodeTree::kRootId) AttachRoot(model, node.mEntry);
    model.mNodes.emplace(node.mEntry.mId, std::move(node));
  }
  return true;
}

}  // namespace

void ExpectDatasets(const std::vector<InputFile>& inputs, bool join, ExpectedModel& model,
                    std::vector<Obstacle>& obstacles) {
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    if (inputs[i].mIsViewFile) continue;
    const bool isJoined = join && IsMergedDatasets(inputs[i]);
    if (model.mNodes.empty() && isJoined) {
      for (const auto& [id, entry] : inputs[i].GetNodes()) {
        model.mNodes.emplace(id, ExpectNode(i, entry));
      }
      continue;
    }
    model.mNodes[NodeTree::kRootId].mEntry.mId = NodeTree::kRootId;
    const bool isDone = isJoined ? ExpectJoined(model, inputs[i], i, obstacles)
                                 : ExpectDataset(model, inputs[i], i, obstacles);
    if (!isDone) return;
  }
}

}  // namespace Qov::Tools
