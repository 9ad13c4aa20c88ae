#include <fmt/format.h>

#include "Recount.h"
#include "Utf8.h"
#include "compare/Attributes.h"
#include "compare/Records.h"

namespace Qov::Tools {
namespace {

using QovRyx::Group;
using Entry = QovRyx::NodeTree::Node;

/// What is at the root of merged datasets.
struct MergeGroup : Group {
  MergeGroup() : Group("Merge") { mTakesModels = 1; }
};

bool HasSameLinks(const Entry& left, const Entry& right) {
  return left.mParent == right.mParent && left.mPreviousSibling == right.mPreviousSibling &&
         left.mNextSibling == right.mNextSibling && left.mFirstChild == right.mFirstChild &&
         left.mLastChild == right.mLastChild;
}

}  // namespace

void Recount::Run() {
  CompareNodes();
  CompareLinks();
  CompareValues();
  CompareViews();
  CompareHistory();
}

void Recount::ReportUnread(const std::vector<Finding>& unread) {
  for (const Finding& finding : unread) {
    Difference difference;
    if (finding.mPlace.mNode) {
      difference.mNode = finding.mPlace.mNode->mNumber;
      difference.mNodeName = Shortened(finding.mPlace.mNode->mName);
    }
    Place place = finding.mPlace;
    place.mNode.reset();
    if (place.mResult) difference.mSubject = place.mResult->mName;
    place.mResult.reset();
    difference.mText =
        fmt::format("holds what programs do not read: {} ({})", finding.mText, place.GetText());
    mDifferences.Add(std::move(difference));
  }
}

Difference Recount::About(const ExpectedNode& node, const std::string& text) const {
  Difference difference;
  difference.mNode = node.mLinks.mId;
  if (node.mpSource != nullptr) difference.mInput = mInputs[node.mInput].mPath;
  const QovRyx::Node* content = node.GetContent();
  if (content != nullptr) difference.mNodeName = Shortened(content->GetName());
  difference.mText = text;
  return difference;
}

void Recount::Report(ExpectedNode& node, const std::string& text) {
  node.mSound = false;
  mDifferences.Add(About(node, text));
}

void Recount::ReportUnlessEmpty(ExpectedNode& node, const char* text, const std::string& details) {
  if (!details.empty()) Report(node, fmt::format("{}: {}", text, details));
}

void Recount::Report(const ExpectedNode& node, ExpectedResult& result, const std::string& text) {
  result.mSound = false;
  Difference difference = About(node, text);
  difference.mSubject = result.mName;
  difference.mInput = mInputs[result.mInput].mPath;
  mDifferences.Add(std::move(difference));
}

void Recount::Report(std::size_t input, const std::string& subject, const std::string& text) {
  Difference difference;
  difference.mInput = mInputs[input].mPath;
  difference.mSubject = subject;
  difference.mText = text;
  mDifferences.Add(std::move(difference));
}

void Recount::CompareNodes() {
  for (auto& [id, node] : mModel.mNodes) CompareNode(node);
  for (const auto& [id, entry] : mOutput.GetNodes()) {
    if (mModel.mNodes.contains(id)) continue;
    Difference difference;
    difference.mNode = id;
    if (entry.mData) difference.mNodeName = entry.mData->GetName();
    difference.mText = "is a node too many";
    mDifferences.Add(std::move(difference));
  }
}

void Recount::CompareNode(ExpectedNode& node) {
  const Entry* entry = mOutput.GetNodes().FindNode(node.mLinks.mId);
  const Item wanted = node.mpSource == nullptr ? Item::Group : ItemOf(*node.mpSource);
  if (entry == nullptr || ItemOf(*entry) != wanted) {
    Report(node, entry == nullptr ? "is missing" : "is a node of another type");
    for (ExpectedResult& result : node.mResults) Report(node, result, "is missing");
    node.mNumSoundSets = 0;
    return;
  }
  if (!HasSameLinks(*entry, node.mLinks)) Report(node, "stands elsewhere in the tree");
  if (entry->mData) CompareContent(node, *entry->mData);
}

void Recount::CompareContent(ExpectedNode& node, const QovRyx::Node& content) {
  static const MergeGroup kMergeGroup;
  const QovRyx::Node& wanted = node.mpSource == nullptr ? kMergeGroup : *node.GetContent();
  if (content.GetName() != wanted.GetName()) Report(node, "has another name");
  if (const auto* group = dynamic_cast<const Group*>(&content)) {
    const auto& wantedGroup = dynamic_cast<const Group&>(wanted);
    ReportUnlessEmpty(node, "has other fields", NameDifferingFields(wantedGroup, *group));
    const std::string attributes =
        DescribeDifference(wantedGroup.mAttributes, group->mAttributes, "the input", "the output");
    if (!attributes.empty()) Report(node, attributes);
  } else if (const auto* shape = dynamic_cast<const QovRyx::Shape*>(&content)) {
    const auto& wantedShape = dynamic_cast<const QovRyx::Shape&>(wanted);
    ReportUnlessEmpty(node, "has another material",
                      NameDifferingFields(wantedShape.mMaterial.mValues, shape->mMaterial.mValues));
  } else if (const auto* geometry = dynamic_cast<const QovRyx::Geometry*>(&content)) {
    MatchResults(node, *geometry);
  }
}

}  // namespace Qov::Tools
