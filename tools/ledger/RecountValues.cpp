#include <fmt/format.h>

#include <algorithm>

#include "ErrorText.h"
#include "Qov/Ryx/Progress.h"
#include "Qov/Util/FileContext.h"
#include "Recount.h"
#include "compare/Sets.h"
#include "compare/Values.h"

namespace Qov::Tools {
namespace {

using Values = std::vector<std::uint32_t>;

/// Returns an empty text if all values are the same, to the last bit.
std::string DescribeValueDifference(const Values& wanted, const Values& found, bool integer,
                                    std::uint8_t width) {
  const ValueComparison comparison = CompareValues(wanted, found, integer, nullptr);
  if (comparison.IsEqual()) return "";
  return fmt::format("{}: {}, should be {}", DescribeDifference(comparison, width),
                     ElementText(comparison.mBitsB, integer),
                     ElementText(comparison.mBitsA, integer));
}

/// Reads something of the output; what hinders that is returned.
template <class Read>
std::string TryToRead(Read read) {
  try {
    read();
    return "";
  } catch (const std::exception& error) {
    return "cannot be read: " + ErrorText(error);
  }
}

std::string DescribeSetDifference(const QovRyx::SetColumns::View& wanted,
                                  const QovRyx::SetColumns::View& found) {
  if (wanted.mName != found.mName) return "has another name";
  const std::string text = DescribeDifference(wanted, found);
  return text.empty() ? "" : "has other members: " + text;
}

std::uint64_t CountValueBytes(const ExpectedModel& model) {
  std::uint64_t numBytes = 0;
  for (const auto& [id, node] : model.mNodes) {
    for (const ExpectedResult& result : node.mResults) {
      if (!result.mLink.IsLinked() && result.mpValues != nullptr)
        numBytes += result.mpValues->mValues.GetSize();
    }
  }
  return numBytes;
}

}  // namespace

/// So they are stored: the integer kinds, all others, the node sets.
void Recount::CompareValues() {
  const QovRyx::ProgressReport progress(CountValueBytes(mModel));
  CompareArrays(true);
  CompareArrays(false);
  for (auto& [id, node] : mModel.mNodes) {
    if (node.mSound || node.mNumSoundSets != 0) CompareSets(node);
  }
}

void Recount::CompareArrays(bool integerKinds) {
  for (auto& [id, node] : mModel.mNodes) {
    for (ExpectedResult& expected : node.mResults) {
      const Result* result = expected.mpFound;
      if (result == nullptr || result->mLink.IsLinked() || expected.mLink.IsLinked()) continue;
      if (result->IsIntegerKind() == integerKinds) CompareArray(node, expected, *result);
    }
  }
}

void Recount::CompareArray(const ExpectedNode& node, ExpectedResult& expected,
                           const Result& result) {
  const QovRyx::NumericArray none;
  const QovRyx::NumericArray& wanted =
      expected.mpValues != nullptr ? expected.mpValues->mValues : none;
  const QovRyx::NumericArray& found = result.mValues;
  if (wanted.GetWidth() != found.GetWidth()) Report(node, expected, "has items of another width");
  if (wanted.GetNumElements() != found.GetNumElements()) {
    Report(node, expected,
           fmt::format("has {} values, should have {}", found.GetNumElements(),
                       wanted.GetNumElements()));
    return;
  }
  Values wantedValues;
  Values foundValues;
  QovRyx::ProgressReport::Advance(wanted.GetSize());
  Util::WithFileContext(mInputs[expected.mInput].mPath, [&] { wanted.GetValues(wantedValues); });
  std::string text = TryToRead([&] { found.GetValues(foundValues); });
  if (text.empty()) {
    text = DescribeValueDifference(wantedValues, foundValues, result.HoldsUnsigned(),
                                   wanted.GetWidth());
  }
  if (!text.empty()) Report(node, expected, text);
}

void Recount::CompareSets(ExpectedNode& node) {
  const auto* source = dynamic_cast<const QovRyx::NodeSets*>(node.GetContent());
  const auto* entry = mOutput.GetNodes().FindNode(node.mLinks.mId);
  if (source == nullptr || entry == nullptr) return;
  const auto* output = dynamic_cast<const QovRyx::NodeSets*>(entry->mData.get());
  if (output == nullptr) return;
  node.mNumSoundSets = 0;
  const auto wanted =
      Util::WithFileContext(mInputs[node.mInput].mPath, [source] { return source->GetColumns(); });
  QovRyx::SetColumns found;
  const std::string trouble = TryToRead([&] { found = output->GetColumns(); });
  if (!trouble.empty()) {
    Report(node, trouble);
    return;
  }
  if (found.size() != wanted.size()) {
    Report(node, fmt::format("has {} sets, should have {}", found.size(), wanted.size()));
  }
  for (std::size_t i = 0; i < std::min(found.size(), wanted.size()); ++i) {
    Difference difference = About(node, DescribeSetDifference(wanted[i], found[i]));
    difference.mSubject = wanted[i].mName;
    if (difference.mText.empty()) {
      ++node.mNumSoundSets;
    } else {
      mDifferences.Add(std::move(difference));
    }
  }
}

}  // namespace Qov::Tools
