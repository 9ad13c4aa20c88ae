#include "VerifyResults.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

#include "ExpectedLinks.h"
#include "compare/Attributes.h"
#include "compare/NameMatching.h"
#include "model/ModelFormat.h"
#include "model/TimeAttribute.h"

namespace Qov::Tools {
namespace {

/// Returns the kind as it is stored.
template <class AnyResult>
std::uint32_t KindWord(const AnyResult& result) {
  return QovRyx::MakeKindWord(result.mKind, result.mKindHighByte);
}

QovUtil::Attributes ExpectedAttributes(const ExpectedResult& expected) {
  QovUtil::Attributes attributes = expected.mpFields->mAttributes;
  if (expected.mpTimedGroup != nullptr) {
    const auto time = QovRyx::GetTimeValue(expected.mpTimedGroup->mAttributes);
    attributes.Set(QovRyx::kTimeAttribute, time.value());
  }
  return attributes;
}

/// With `mayStoreOnce`, accepts a link instead of values. VerifyValues compares its values.
void CompareDescriptors(const ExpectedNode& node, ExpectedResult& expected, const Result& result,
                        bool mayStoreOnce, FaultReporter& reporter) {
  if (expected.mMade == MadeRule::LinkReplaced && !result.mLink.IsLinked() &&
      result.mValues.GetNumElements() == 0) {
    expected.mLink = {};  // a link without values may become a result without values
    expected.mKindHighByte = 0;
  }
  // Results that were linked to a removed one share its values through a link; only the first of
  // them takes the values and the high byte of the kind.
  if (expected.mMade == MadeRule::Unlinked && mayStoreOnce && result.mLink.IsLinked()) {
    expected.mKindHighByte = result.mKindHighByte;
  }
  if (KindWord(expected) != KindWord(result)) reporter.Report(node, expected, "has another kind");
  if (expected.mpFields->mFlag != result.mFlag) {
    reporter.Report(node, expected, "has another flag");
  }
  const std::string attributes = DescribeDifference(ExpectedAttributes(expected),
                                                    result.mAttributes, "the input", "the output");
  if (!attributes.empty()) reporter.Report(node, expected, attributes);
  const bool isLinked = expected.mLink.IsLinked();
  if (mayStoreOnce && !isLinked && result.mLink.HasTarget()) {
    expected.mLink = result.mLink;
    expected.mMade = MadeRule::StoredOnce;
  } else if (isLinked != result.mLink.IsLinked()) {
    reporter.Report(node, expected, isLinked ? "is not linked" : "is linked");
  } else if (!isLinked && !HasSameFlags(expected.mpValues, result)) {
    reporter.Report(node, expected, "has other flags");
  }
}

/// Compares the links of an output with the expected ones.
class LinkVerifier {
 public:
  LinkVerifier(const ExpectedModel& model, const QovRyx::NodeTree& output)
      : mModel(model),
        mOutput(output),
        mExpectedLinks(FollowLinks(model)),
        mLinks(QovRyx::FollowLinks(output)) {}

  /// Returns the fault of a linked result; empty if there is none.
  std::string FindFault(const ExpectedNode& node, const ExpectedResult& expected);

 private:
  std::string FindFaultWithoutValues(const ExpectedNode& node,
                                     const ExpectedResult& expected) const;
  QovRyx::ResultPlace FindDanglingPlace(const ExpectedNode& node,
                                        const ExpectedResult& expected) const;

  const ExpectedModel& mModel;
  const QovRyx::NodeTree& mOutput;
  QovRyx::LinkFollower<ExpectedResult> mExpectedLinks;
  QovRyx::LinkFollower<Result> mLinks;
};

std::string LinkVerifier::FindFault(const ExpectedNode& node, const ExpectedResult& expected) {
  const ExpectedResult* wanted = mExpectedLinks.FindOwner(expected);
  const Result* owner = mLinks.FindOwner(*expected.mpFound);
  if (wanted == nullptr) {
    return owner == nullptr ? FindFaultWithoutValues(node, expected)
                            : "has a link to values, but should have none";
  }
  if (owner == nullptr) return "has a link without values";
  return owner == wanted->mpFound ? "" : "is linked to another result";
}

/// Returns the fault of a link that has no values, as expected; empty if there is none.
std::string LinkVerifier::FindFaultWithoutValues(const ExpectedNode& node,
                                                 const ExpectedResult& expected) const {
  const Result& result = *expected.mpFound;
  const Result* target = QovRyx::FindTarget(mOutput, result.mLink);
  if (expected.mMade == MadeRule::LinkReplaced) return "";
  if (expected.mMade == MadeRule::LinkedToItself) {
    return target == &result ? "" : "is not linked to itself";
  }
  if (expected.mLink.HasTarget()) {
    const ExpectedResult* wanted = mModel.FindTarget(expected);
    const bool isSame = wanted != nullptr && wanted->mpFound == target;
    return isSame ? "" : "is linked to another result";
  }
  const QovRyx::ResultPlace wanted = FindDanglingPlace(node, expected);
  const QovRyx::ResultPlace& found = result.mLink.GetPlace();
  if (found == wanted) return "";
  return fmt::format("has a dangling link to node {}, result {}; should be node {}, result {}",
                     found.mNode, found.mPosition, wanted.mNode, wanted.mPosition);
}

/// Returns the expected place of a link that is dangling in its input. The node id, unless it is 0,
/// is shifted like the ids of the input's nodes. The place becomes (0, 0) if the merge put a result
/// there.
QovRyx::ResultPlace LinkVerifier::FindDanglingPlace(const ExpectedNode& node,
                                                    const ExpectedResult& expected) const {
  QovRyx::ResultPlace place = expected.mLink.GetPlace();
  const std::uint32_t base = node.mEntry.mId - node.mpSource->mId;
  const bool canShift = place.mNode < std::numeric_limits<std::uint32_t>::max() - base;
  if (place.mNode != 0 && canShift) place.mNode += base;
  return mModel.FindResult(place) == nullptr ? place : QovRyx::ResultPlace{};
}

}  // namespace

bool HasSameFlags(const Result* owner, const Result& right) {
  const Result none;
  const Result& left = owner == nullptr ? none : *owner;
  return left.mFlag1 == right.mFlag1 && left.mFlag2 == right.mFlag2 &&
         left.mFlag3 == right.mFlag3 && left.mValue1 == right.mValue1 &&
         left.mValue2 == right.mValue2;
}

void VerifyResults(ExpectedNode& node, const QovRyx::Geometry& geometry, bool mayStoreOnce,
                   FaultReporter& reporter) {
  NameMatching names(geometry.GetVariables());
  std::vector<bool> isExpected(geometry.GetVariables().size());
  std::size_t end = 0;  // the position after the last result that was matched in order
  for (ExpectedResult& expected : node.mResults) {
    const std::optional<std::size_t> position = names.Take(expected.mName);
    if (!position) {
      reporter.Report(node, expected, "is missing");
      continue;
    }
    isExpected[*position] = true;
    expected.mpFound = &geometry.GetVariables()[*position];
    if (*position < end) reporter.Report(node, expected, "is at another position");
    end = std::max(end, *position + 1);
    CompareDescriptors(node, expected, *expected.mpFound, mayStoreOnce, reporter);
  }
  for (std::size_t i = 0; i < isExpected.size(); ++i) {
    if (isExpected[i]) continue;
    Fault fault = reporter.MakeFault(node, "is an unexpected result");
    fault.mInput.clear();
    fault.mSubject = geometry.GetVariables()[i].mName;
    reporter.Report(std::move(fault));
  }
}

void VerifyLinks(ExpectedModel& model, const QovRyx::NodeTree& output, FaultReporter& reporter) {
  LinkVerifier links(model, output);
  for (auto& [id, node] : model.mNodes) {
    for (ExpectedResult& expected : node.mResults) {
      const Result* found = expected.mpFound;
      if (found == nullptr || !expected.mLink.IsLinked() || !found->mLink.IsLinked()) continue;
      const std::string fault = links.FindFault(node, expected);
      if (!fault.empty()) reporter.Report(node, expected, fault);
    }
  }
}

}  // namespace Qov::Tools
