#include "ExpectDatasets.h"

#include <fmt/format.h>

#include <limits>

namespace Qov::Tools {
namespace {

using Entry = QovRyx::NodeTree::Node;
constexpr std::uint32_t kRootId = QovRyx::NodeTree::kRootId;
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

void ShiftLinks(std::vector<ExpectedResult>& results, std::uint32_t base) {
  for (ExpectedResult& result : results) {
    const auto [node, position] = result.mLink.GetPlace();
    result.mLink.MoveTo({node + base, position});
  }
}

/// Makes the root of an input the last child of the group that holds the models.
void AttachRoot(ExpectedModel& model, Entry& root) {
  Entry& group = model.mNodes[kRootId].mEntry;
  root.mParent = kRootId;
  root.mPreviousSibling = group.mLastChild;
  if (group.mLastChild == 0) {
    group.mFirstChild = root.mId;
  } else {
    model.mNodes[group.mLastChild].mEntry.mNextSibling = root.mId;
  }
  group.mLastChild = root.mId;
}

/// Adds the nodes of an input. Returns false if their ids are too high.
bool ExpectDataset(ExpectedModel& model, const InputFile& input, std::size_t position,
                   std::vector<Obstacle>& obstacles) {
  const std::uint32_t base = model.mNodes.rbegin()->first;
  for (const auto& [id, entry] : input.GetNodes()) {
    ExpectedNode node = ExpectNode(position, entry);
    if (!ShiftIds(node.mEntry, base)) {
      const std::string text = fmt::format("the ids of node {} cannot be shifted by {}", id, base);
      obstacles.push_back({input.mPath, text, entry.mData ? entry.mData->GetName() : ""});
      return false;
    }
    if (node.mEntry.mParent == 0) node.mEntry.mParent = kRootId;
    ShiftLinks(node.mResults, base);
    if (id == kRootId) AttachRoot(model, node.mEntry);
    model.mNodes.emplace(node.mEntry.mId, std::move(node));
  }
  return true;
}

}  // namespace

void ExpectDatasets(const std::vector<InputFile>& inputs, ExpectedModel& model,
                    std::vector<Obstacle>& obstacles) {
  model.mNodes[kRootId].mEntry.mId = kRootId;
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    if (inputs[i].mIsViewFile) continue;
    if (!ExpectDataset(model, inputs[i], i, obstacles)) return;
  }
}

}  // namespace Qov::Tools
