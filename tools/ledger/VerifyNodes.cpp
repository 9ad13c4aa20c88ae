#include "VerifyNodes.h"

#include "VerifyResults.h"
#include "compare/Attributes.h"
#include "compare/Records.h"

namespace Qov::Tools {
namespace {

using QovRyx::Group;
using Entry = QovRyx::NodeTree::Node;

/// The group at the root of merged datasets.
struct MergeGroup : Group {
  MergeGroup() : Group("Merge") { mTakesModels = 1; }
};

bool HasSameTreeLinks(const Entry& left, const Entry& right) {
  return left.mParent == right.mParent && left.mPreviousSibling == right.mPreviousSibling &&
         left.mNextSibling == right.mNextSibling && left.mFirstChild == right.mFirstChild &&
         left.mLastChild == right.mLastChild;
}

void VerifyContent(ExpectedNode& node, const QovRyx::Node& content, bool mayStoreOnce,
                   FaultReporter& reporter) {
  static const MergeGroup kMergeGroup;
  const QovRyx::Node& wanted = node.mpSource == nullptr ? kMergeGroup : *node.GetContent();
  if (content.GetName() != wanted.GetName()) reporter.Report(node, "has another name");
  if (const auto* group = dynamic_cast<const Group*>(&content)) {
    const auto& wantedGroup = dynamic_cast<const Group&>(wanted);
    reporter.ReportDetails(node, "has other fields", NameDifferingFields(wantedGroup, *group));
    const std::string attributes =
        DescribeDifference(wantedGroup.mAttributes, group->mAttributes, "the input", "the output");
    if (!attributes.empty()) reporter.Report(node, attributes);
  } else if (const auto* shape = dynamic_cast<const QovRyx::Shape*>(&content)) {
    const auto& wantedShape = dynamic_cast<const QovRyx::Shape&>(wanted);
    reporter.ReportDetails(
        node, "has another material",
        NameDifferingFields(wantedShape.mMaterial.mValues, shape->mMaterial.mValues));
  } else if (const auto* geometry = dynamic_cast<const QovRyx::Geometry*>(&content)) {
    VerifyResults(node, *geometry, mayStoreOnce, reporter);
  }
}

void VerifyNode(ExpectedNode& node, const Entry* entry, bool mayStoreOnce,
                FaultReporter& reporter) {
  const Item wanted = node.mpSource == nullptr ? Item::Group : ItemOf(*node.mpSource);
  if (entry == nullptr || ItemOf(*entry) != wanted) {
    reporter.Report(node, entry == nullptr ? "is missing" : "is a node of another type");
    for (ExpectedResult& result : node.mResults) reporter.Report(node, result, "is missing");
    node.mNumSoundSets = 0;
    return;
  }
  if (!HasSameTreeLinks(*entry, node.mEntry)) {
    reporter.Report(node, "has another place in the tree");
  }
  if (entry->mData) VerifyContent(node, *entry->mData, mayStoreOnce, reporter);
}

}  // namespace

void VerifyNodes(ExpectedModel& model, const QovRyx::NodeTree& output, FaultReporter& reporter) {
  for (auto& [id, node] : model.mNodes) {
    VerifyNode(node, output.FindNode(id), model.mMayStoreOnce, reporter);
  }
  for (const auto& [id, entry] : output) {
    if (model.mNodes.contains(id)) continue;
    Fault fault;
    fault.mNode = id;
    if (entry.mData) fault.mNodeName = entry.mData->GetName();
    fault.mText = "is an unexpected node";
    reporter.Report(std::move(fault));
  }
}

}  // namespace Qov::Tools
