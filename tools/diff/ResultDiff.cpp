#include "diff/ResultDiff.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <numeric>
#include <tuple>
#include <utility>

#include "ErrorText.h"
#include "Qov/Ryx/Progress.h"
#include "ValueText.h"
#include "VerifiedValues.h"
#include "compare/Attributes.h"
#include "compare/NameMatching.h"
#include "model/ReadPlan.h"

namespace Qov::Tools {
namespace {

using QovRyx::Geometry;
using Variable = Geometry::VarStruct;

auto CarriedOf(const Variable& variable) {
  return std::tie(variable.mFlag, variable.mFlag1, variable.mFlag2, variable.mFlag3,
                  variable.mValue1, variable.mValue2);
}

std::string LinkText(const Variable& variable) {
  if (!variable.mLink.IsLinked()) return "not linked";
  const auto [node, position] = variable.mLink.GetPlace();
  return fmt::format("linked to node {}, result {}", node, position);
}

}  // namespace

void ResultDiff::Match(const NodePair& pair, const Geometry& a, const Geometry& b) {
  NameMatching names(b.GetVariables());
  Matched& matched = mMatched[mMatching.GetA(pair).mId];
  matched.mNodeB = mMatching.GetB(pair).mId;
  for (const Variable& variable : a.GetVariables()) {
    const auto position = names.Take(variable.mName);
    matched.mPositions.push_back(position ? static_cast<std::uint32_t>(*position) : kUnmatched);
  }
  matched.mIsInOrder = names.IsInOrder();
}

void ResultDiff::CompareDescriptors(const NodePair& pair, const Geometry& a, const Geometry& b) {
  const Matched& matched = mMatched.at(mMatching.GetA(pair).mId);
  std::vector<bool> isInA(b.GetVariables().size());
  for (std::size_t i = 0; i < a.GetVariables().size(); ++i) {
    const std::uint32_t inB = matched.mPositions[i];
    if (inB == kUnmatched) {
      ReportOnly(pair, a.GetVariables()[i], i, true);
      continue;
    }
    isInA[inB] = true;
    CompareResult({&pair, &a.GetVariables()[i], &b.GetVariables()[inB], i, inB});
  }
  for (std::size_t i = 0; i < isInA.size(); ++i) {
    if (!isInA[i]) ReportOnly(pair, b.GetVariables()[i], i, false);
  }
  if (matched.mIsInOrder || !mOptions.Compares("order")) return;
  mReport.mDifferences.push_back(
      mMatching.MakeDifference(pair, "order", "the order of the results differs"));
}

void ResultDiff::ReportOnly(const NodePair& pair, const Variable& variable, std::size_t position,
                            bool inA) {
  ModelDifference difference = mMatching.MakeDifference(pair, inA ? "only-in-a" : "only-in-b",
                                                        fmt::format("only in {}", inA ? "A" : "B"));
  difference.mResult = variable.mName;
  (inA ? difference.mPositionA : difference.mPositionB) = position;
  ++(inA ? mReport.mResults.mOnlyInA : mReport.mResults.mOnlyInB);
  mReport.mDifferences.push_back(std::move(difference));
}

ModelDifference ResultDiff::MakeDifference(const ResultPair& results, const char* code,
                                           std::string text) const {
  ModelDifference difference = mMatching.MakeDifference(*results.mNodes, code, std::move(text));
  difference.mResult = results.mA->mName;
  difference.mPositionA = results.mPositionA;
  difference.mPositionB = results.mPositionB;
  return difference;
}

void ResultDiff::Add(const ResultPair& results, const char* code, std::string text) {
  mDiffering.insert(results.mA);
  mReport.mDifferences.push_back(MakeDifference(results, code, std::move(text)));
}

void ResultDiff::CompareResult(const ResultPair& results) {
  const Variable& a = *results.mA;
  const Variable& b = *results.mB;
  ++mReport.mResults.mInBoth;
  if (a.mKind != b.mKind || a.mKindHighByte != b.mKindHighByte) {
    Add(results, "kind", fmt::format("kind {} and {}", KindText(a), KindText(b)));
  }
  if (mOptions.Compares("flags") && CarriedOf(a) != CarriedOf(b)) {
    Add(results, "flags", "the flags and values that are only carried differ");
  }
  if (mOptions.Compares("attributes")) {
    const std::string text = DescribeDifference(a.mAttributes, b.mAttributes, "A", "B");
    if (!text.empty()) Add(results, "attributes", text);
  }
  const bool isAnyLinked = a.mLink.IsLinked() || b.mLink.IsLinked();
  const bool isSameLink = a.mLink.IsLinked() && b.mLink.IsLinked() && LeadToTheSame(a, b);
  if (mOptions.Compares("links") && !isSameLink && isAnyLinked) {
    Add(results, "link", fmt::format("{} in A, {} in B", LinkText(a), LinkText(b)));
  }
  // Shared values are compared at their owner.
  if (!isSameLink) CompareShape(results);
}

void ResultDiff::CompareShape(const ResultPair& results) {
  const QovRyx::NumericArray& a = results.mA->mValues;
  const QovRyx::NumericArray& b = results.mB->mValues;
  if (a.GetWidth() != b.GetWidth()) {
    Add(results, "width", fmt::format("width {} and {}", a.GetWidth(), b.GetWidth()));
  }
  if (a.GetSize() != b.GetSize()) {
    const bool tellsApart = CountText(a) != CountText(b);
    Add(results, "count",
        tellsApart ? fmt::format("{} and {} items", CountText(a), CountText(b))
                   : fmt::format("{} and {} bytes", a.GetSize(), b.GetSize()));
  }
  const bool canCompare = a.GetNumElements() == b.GetNumElements() && a.GetNumElements() != 0;
  if (!canCompare || !mOptions.Compares("values")) return;
  mTasks.push_back({results, mReport.mDifferences.size()});
}

/// Returns true if both links lead to the same result, or dangle in the same way.
bool ResultDiff::LeadToTheSame(const Variable& a, const Variable& b) const {
  const QovRyx::ResultPlace& placeA = a.mLink.GetPlace();
  const QovRyx::ResultPlace& placeB = b.mLink.GetPlace();
  const auto found = mMatched.find(placeA.mNode);
  if (found == mMatched.end() || placeA.mPosition >= found->second.mPositions.size()) {
    return placeA == placeB && a.mValues.GetSize() == 0 && b.mValues.GetSize() == 0;
  }
  return placeB.mNode == found->second.mNodeB &&
         placeB.mPosition == found->second.mPositions[placeA.mPosition];
}

void ResultDiff::CompareAllValues() {
  std::stable_sort(mTasks.begin(), mTasks.end(), [this](const Task& left, const Task& right) {
    const auto key = [this](const Task& task) {
      const Variable& variable = *task.mResults.mA;
      return std::make_tuple(variable.mLink.IsLinked(), !variable.IsIntegerKind(),
                             mMatching.GetA(*task.mResults.mNodes).mId);
    };
    return key(left) < key(right);
  });
  const QovRyx::ProgressReport progress(CountBytesToCompare());
  QovJbf::ReadAhead::Parts parts;
  for (const Task& task : mTasks) {
    const auto& [nodes, a, b, positionA, positionB] = task.mResults;
    if (a->mLink.IsLinked() || b->mLink.IsLinked()) continue;
    QovRyx::AddPart(a->mValues, parts);
    QovRyx::AddPart(b->mValues, parts);
  }
  const QovJbf::ReadAhead ahead(parts);
  std::multimap<std::size_t, ModelDifference> found;
  for (const Task& task : mTasks) {
    QovRyx::ProgressReport::Advance(task.mResults.mA->mValues.GetSize());
    const ArrayComparison comparison = CompareValuesOnce(task);
    const bool isTrouble = !comparison.mTrouble.empty();
    if (!isTrouble && comparison.mValues.IsEqual()) continue;
    mDiffering.insert(task.mResults.mA);
    if (isTrouble) ++mReport.mNumUnreadable;
    found.emplace(task.mNumBefore, isTrouble ? MakeDifference(task.mResults, "unreadable",
                                                              "the values cannot be compared: " +
                                                                  comparison.mTrouble)
                                             : MakeValueDifference(task.mResults, comparison));
  }
  if (mItemNames) mReport.mIdTrouble = mItemNames->GetTrouble();
  std::vector<ModelDifference> all;
  for (std::size_t i = 0; i <= mReport.mDifferences.size(); ++i) {
    for (auto [at, end] = found.equal_range(i); at != end; ++at)
      all.push_back(std::move(at->second));
    if (i < mReport.mDifferences.size()) all.push_back(std::move(mReport.mDifferences[i]));
  }
  mReport.mDifferences = std::move(all);
  mReport.mResults.mSame = mReport.mResults.mInBoth - mDiffering.size();
}

ModelDifference ResultDiff::MakeValueDifference(const ResultPair& results,
                                                const ArrayComparison& comparison) {
  const ValueComparison& values = comparison.mValues;
  const std::uint8_t width = results.mA->mValues.GetWidth();
  std::optional<ItemName> item;
  if (mItemNames) {
    const Geometry* geometry = QovRyx::AsGeometry(*mMatching.GetA(*results.mNodes).mEntry);
    item = mItemNames->Find(*geometry, *results.mA, GetItem(values, width));
  }
  std::string text = fmt::format(
      "{}: {} and {}",
      item ? DescribeDifference(values, width, ItemText(*item)) : DescribeDifference(values, width),
      ElementText(values.mBitsA, values.mIntegers), ElementText(values.mBitsB, values.mIntegers));
  if (comparison.mNorms) text += "; " + NormsText(*comparison.mNorms);
  ModelDifference difference = MakeDifference(results, "values", std::move(text));
  difference.mValues = values;
  difference.mItem = item;
  difference.mNorms = comparison.mNorms;
  return difference;
}

std::uint64_t ResultDiff::CountBytesToCompare() const {
  return std::accumulate(mTasks.begin(), mTasks.end(), std::uint64_t{0},
                         [](std::uint64_t sum, const Task& task) {
                           return sum + task.mResults.mA->mValues.GetSize();
                         });
}

ResultDiff::ArrayComparison ResultDiff::ReadAndCompare(const Variable& a, const Variable& b,
                                                       bool integers, const Tolerance* tolerance) {
  const char* side = "A";
  try {
    ReadVerifiedValues(a.mValues, mValuesA);
    side = "B";
    ReadVerifiedValues(b.mValues, mValuesB);
    if (mValuesA.GetSize() != mValuesB.GetSize()) {
      return {{}, {}, "the numbers of values differ"};
    }
    if (mValuesA.HasSameBytes(mValuesB)) return {};
    const std::vector<std::uint32_t>& valuesA = mValuesA.GetValues();
    const std::vector<std::uint32_t>& valuesB = mValuesB.GetValues();
    ArrayComparison comparison{CompareValues(valuesA, valuesB, integers, tolerance), {}, ""};
    if (mOptions.mComputesNorms && !comparison.mValues.IsEqual()) {
      comparison.mNorms = ComputeNorms(valuesA, valuesB, integers);
    }
    return comparison;
  } catch (const std::exception& error) {
    return {{}, {}, fmt::format("{}: {}", side, ErrorText(error))};
  }
}

/// Compares the arrays of linked results once, because many links can lead to the same two arrays.
ResultDiff::ArrayComparison ResultDiff::CompareValuesOnce(const Task& task) {
  const Variable& a = *task.mResults.mA;
  const Variable& b = *task.mResults.mB;
  const bool integersInA = mOwnersA.HoldUnsigned(a);
  const bool integersInB = mOwnersB.HoldUnsigned(b);
  const bool integers = integersInA && integersInB;
  const Tolerance* tolerance =
      integersInA || integersInB ? nullptr : mOptions.mTolerances.Find(a.mName);
  if (!a.mLink.IsLinked() && !b.mLink.IsLinked()) {
    return ReadAndCompare(a, b, integers, tolerance);
  }
  const auto [known, isNew] = mCompared.try_emplace(
      {a.mValues.GetLoader().get(), b.mValues.GetLoader().get(), tolerance, integers});
  if (isNew) known->second = ReadAndCompare(a, b, integers, tolerance);
  return known->second;
}

}  // namespace Qov::Tools
