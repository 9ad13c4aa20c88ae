#include "ExpectedModel.h"

namespace Qov::Tools {
namespace {

/// Returns a result of an input, as it is there.
ExpectedResult ExpectResult(std::size_t input, const Result& result) {
  ExpectedResult expected;
  expected.mName = result.mName;
  expected.mInput = input;
  expected.mpSource = &result;
  expected.mpFields = &result;
  expected.mKind = result.mKind;
  expected.mKindHighByte = result.mKindHighByte;
  expected.mLink = result.mLink;
  if (!result.mLink.IsLinked()) expected.mpValues = &result;
  return expected;
}

}  // namespace

bool ExpectedNode::IsGeometry() const {
  return mpSource != nullptr && QovRyx::AsGeometry(*mpSource) != nullptr;
}

const ExpectedResult* ExpectedModel::FindResult(const QovRyx::ResultPlace& place) const {
  const auto node = mNodes.find(place.mNode);
  if (node == mNodes.end() || place.mPosition >= node->second.mResults.size()) return nullptr;
  return &node->second.mResults[place.mPosition];
}

const ExpectedResult* ExpectedModel::FindTarget(const ExpectedResult& linked) const {
  return linked.mLink.HasTarget() ? FindResult(linked.mLink.GetPlace()) : nullptr;
}

void ExpectedModel::Drop(std::size_t input, Item item, DropRule rule, std::uint64_t count) {
  if (count != 0) mLedger.mInputs[input][item].mDropped[rule] += count;
}

ExpectedNode ExpectNode(std::size_t input, const QovRyx::NodeTree::Node& entry) {
  ExpectedNode node;
  node.mInput = input;
  node.mpSource = &entry;
  node.mEntry = {entry.mId,
                 entry.mParent,
                 entry.mPreviousSibling,
                 entry.mNextSibling,
                 entry.mFirstChild,
                 entry.mLastChild,
                 nullptr};
  if (const auto* sets = dynamic_cast<const QovRyx::NodeSets*>(entry.mData.get())) {
    node.mNumSoundSets = sets->GetNumSets();
  } else if (const auto* geometry = QovRyx::AsGeometry(entry)) {
    for (const Result& result : geometry->GetVariables()) {
      node.mResults.push_back(ExpectResult(input, result));
    }
  }
  return node;
}

}  // namespace Qov::Tools
