#include <fmt/format.h>

#include <limits>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ExpectedLinks.h"
#include "Recount.h"
#include "compare/Attributes.h"
#include "compare/NameMatching.h"

namespace Qov::Tools {
namespace {

/// As it is stored: "no kind" has no high byte.
template <class AnyResult>
std::uint32_t KindWord(const AnyResult& result) {
  constexpr unsigned kHighByteShift = 24;
  if (result.mKind == QovRyx::Geometry::kNoKind) return result.mKind;
  return result.mKind | result.mKindHighByte << kHighByteShift;
}

/// Returns true if the result has the carried fields of the result that owns its values.
bool HasSameFlags(const Result* owner, const Result& right) {
  const Result none;
  const Result& left = owner == nullptr ? none : *owner;
  return left.mFlag1 == right.mFlag1 && left.mFlag2 == right.mFlag2 &&
         left.mFlag3 == right.mFlag3 && left.mValue1 == right.mValue1 &&
         left.mValue2 == right.mValue2;
}

/// Returns the fault of a link that ends at `end`, or nothing if it is right. The link should end
/// at `match`, the result in the output for `wanted`.
std::string FindLinkFault(const ExpectedResult* wanted, const Result* match, const Result* end) {
  if (end == match && (wanted == nullptr) == (end == nullptr)) return "";
  if (end == nullptr) return "is linked to nothing";
  return wanted == nullptr ? "is linked, but should have no values" : "is linked to another result";
}

}  // namespace

/// One that is missing or too many does not make those behind it differ.
void Recount::MatchResults(ExpectedNode& node, const QovRyx::Geometry& geometry) {
  NameMatching names(geometry.GetVariables());
  std::vector<bool> isExpected(geometry.GetVariables().size());
  std::size_t end = 0;  // behind the last one that was matched in order
  for (ExpectedResult& expected : node.mResults) {
    const std::optional<std::size_t> position = names.Take(expected.mName);
    if (!position) {
      Report(node, expected, "is missing");
      continue;
    }
    const Result& result = geometry.GetVariables()[*position];
    isExpected[*position] = true;
    expected.mpFound = &result;
    if (*position < end) Report(node, expected, "stands in another place");
    end = std::max(end, *position + 1);
    CompareResult(node, expected, result);
  }
  for (std::size_t i = 0; i < isExpected.size(); ++i) {
    if (isExpected[i]) continue;
    Difference difference = About(node, "is a result too many");
    difference.mInput.clear();
    difference.mSubject = geometry.GetVariables()[i].mName;
    mDifferences.Add(std::move(difference));
  }
}

void Recount::CompareResult(const ExpectedNode& node, ExpectedResult& expected,
                            const Result& result) {
  if (KindWord(expected) != KindWord(result)) Report(node, expected, "has another kind");
  if (expected.mpFields->mFlag != result.mFlag) Report(node, expected, "has another flag");
  const std::string attributes = DescribeDifference(expected.mpFields->mAttributes,
                                                    result.mAttributes, "the input", "the output");
  if (!attributes.empty()) Report(node, expected, attributes);
  const bool isLinked = expected.mLink.IsLinked();
  if (isLinked != result.mLink.IsLinked()) {
    Report(node, expected, isLinked ? "is not linked" : "is linked");
  } else if (!isLinked && !HasSameFlags(expected.mpValues, result)) {
    Report(node, expected, "has other flags");
  }
}

/// Returns the expected place of a link that is dangling in its input. The node id, unless it is 0,
/// is shifted like the ids of the input's nodes. The place becomes (0, 0) if the merge put a result
/// there.
QovRyx::ResultPlace Recount::FindDanglingPlace(const ExpectedNode& node,
                                               const ExpectedResult& expected) const {
  QovRyx::ResultPlace place = expected.mLink.GetPlace();
  const std::uint32_t base = node.mLinks.mId - node.mpSource->mId;
  const bool canShift = place.mNode < std::numeric_limits<std::uint32_t>::max() - base;
  if (place.mNode != 0 && canShift) place.mNode += base;
  return mModel.FindResult(place) == nullptr ? place : QovRyx::ResultPlace{};
}

/// Returns the fault of a link that should have no values; empty if there is none.
std::string Recount::FindDanglingFault(const ExpectedNode& node, const ExpectedResult& expected,
                                       const Result& result) const {
  const Result* named = QovRyx::FindTarget(mOutput.GetNodes(), result.mLink);
  if (expected.mMade == MadeRule::LinkedToItself) {
    return named == &result ? "" : "is not linked to itself";
  }
  if (expected.mLink.HasTarget()) {
    const ExpectedResult* next = mModel.FindTarget(expected);
    return next != nullptr && next->mpFound == named ? "" : "is linked to another result";
  }
  const QovRyx::ResultPlace wanted = FindDanglingPlace(node, expected);
  const QovRyx::ResultPlace& found = result.mLink.GetPlace();
  if (found == wanted) return "";
  return fmt::format("has a dangling link to node {}, result {}; should be node {}, result {}",
                     found.mNode, found.mPosition, wanted.mNode, wanted.mPosition);
}

/// By what the links lead to in the end, over whatever other links.
void Recount::CompareLinks() {
  QovRyx::LinkFollower expectedLinks = FollowLinks(mModel);
  QovRyx::LinkFollower links = QovRyx::FollowLinks(mOutput.GetNodes());
  for (auto& [id, node] : mModel.mNodes) {
    for (ExpectedResult& expected : node.mResults) {
      const Result* result = expected.mpFound;
      if (result == nullptr || !expected.mLink.IsLinked() || !result->mLink.IsLinked()) continue;
      const ExpectedResult* wanted = expectedLinks.FindOwner(expected);
      const Result* end = links.FindOwner(*result);
      const Result* match = wanted == nullptr ? nullptr : wanted->mpFound;
      std::string fault = FindLinkFault(wanted, match, end);
      if (fault.empty() && wanted == nullptr) fault = FindDanglingFault(node, expected, *result);
      if (!fault.empty()) Report(node, expected, fault);
    }
  }
}

}  // namespace Qov::Tools
