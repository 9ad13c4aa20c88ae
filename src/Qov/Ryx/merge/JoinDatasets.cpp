#include "JoinDatasets.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

#include "MergeSteps.h"
#include "Qov/Util/Raise.h"

namespace QovRyx {
namespace {

/// Raises the ids of nodes and of the links between them.
class IdShift {
 public:
  /// The lowest id that is shifted is the one after the root.
  explicit IdShift(const NodeTree& into) : mBase(into.GetNextId() - NodeTree::kRootId - 1) {}

  /// Raises ModelError unless an id stays free after the highest one is raised.
  void Check(const NodeTree& nodes) const {
    const std::uint32_t highest = nodes.GetNextId() - 1;
    if (highest < std::numeric_limits<std::uint32_t>::max() - mBase) return;
    Qov::Util::Raise(kMergeSource, Qov::Util::Exception::ErrorType::ModelError,
                     "Node id " + std::to_string(highest) + " is too high to be shifted by " +
                         std::to_string(mBase));
  }

  /// Leaves the root and the absence of an entry as they are.
  std::uint32_t operator()(std::uint32_t id) const {
    return id <= NodeTree::kRootId ? id : id + mBase;
  }

  void Apply(NodeTree::Node& entry) const {
    for (std::uint32_t* id : {&entry.mId, &entry.mParent, &entry.mPreviousSibling,
                              &entry.mNextSibling, &entry.mFirstChild, &entry.mLastChild}) {
      *id = (*this)(*id);
    }
    if (Geometry* geometry = AsGeometry(entry)) {
      for (std::size_t i = 0; i != geometry->GetVariables().size(); ++i) {
        ShiftLink(geometry->EditVariable(i).mLink);
      }
    }
  }

 private:
  /// Shifts the place of a dangling link too, because otherwise it could be that of a result of
  /// another model. A dangling link can hold any number; one that cannot be shifted stays as it is.
  void ShiftLink(ResultLink& link) const {
    const auto [node, position] = link.GetPlace();
    if (!link.IsLinked() || node >= std::numeric_limits<std::uint32_t>::max() - mBase) return;
    ResultLink shifted({(*this)(node), position});
    if (!link.HasTarget()) shifted.LoseTarget();
    link = shifted;
  }

  std::uint32_t mBase;
};

/// Appends the children `first` to `last` to those of the root.
void AppendChildren(NodeTree& nodes, std::uint32_t first, std::uint32_t last) {
  NodeTree::Node& root = nodes.GetReqNode(NodeTree::kRootId);
  if (first == 0) return;
  if (root.mLastChild == 0) {
    root.mFirstChild = first;
  } else {
    nodes.GetReqNode(root.mLastChild).mNextSibling = first;
    nodes.GetReqNode(first).mPreviousSibling = root.mLastChild;
  }
  root.mLastChild = last;
}

}  // namespace

bool IsDatasetMerge(const Tree& tree) {
  const NodeTree::Node& root = tree.GetNodes().GetReqNode(NodeTree::kRootId);
  const auto* group = dynamic_cast<const Group*>(root.mData.get());
  if (group == nullptr || group->GetName() != kMergeGroup) return false;
  const Group plain("");
  return group->TakesModels() && group->mAttributes.empty() &&
         group->mTranslation == plain.mTranslation && group->mRotation == plain.mRotation &&
         group->mScale == plain.mScale;
}

void JoinDatasets(Tree& from, Tree& into) {
  const IdShift shift(into.GetNodes());
  shift.Check(from.GetNodes());
  const NodeTree::Node& root = from.GetNodes().GetReqNode(NodeTree::kRootId);
  for (auto& [id, entry] : from.GetNodes()) {
    if (id == NodeTree::kRootId) continue;
    shift.Apply(entry);
    into.GetNodes().PutNode(std::move(entry));
  }
  AppendChildren(into.GetNodes(), shift(root.mFirstChild), shift(root.mLastChild));
}

}  // namespace QovRyx
