#include "VerifyValues.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "ErrorText.h"
#include "Qov/Ryx/Progress.h"
#include "Qov/Util/FileContext.h"
#include "VerifyResults.h"
#include "compare/Sets.h"
#include "compare/Values.h"
#include "model/LinkFollower.h"

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

/// Reads a part of the output. Returns an error as a text; empty if there is none.
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
      if (result.mpValues != nullptr) numBytes += result.mpValues->mValues.GetSize();
    }
  }
  return numBytes;
}

/// Returns the fault of the values of a result; empty if there is none.
std::string FindValueFault(const QovRyx::NumericArray& wanted, const Result& result,
                           const std::string& inputPath) {
  const QovRyx::NumericArray& found = result.mValues;
  if (wanted.GetNumElements() != found.GetNumElements()) {
    return fmt::format("has {} values, should have {}", found.GetNumElements(),
                       wanted.GetNumElements());
  }
  Values wantedValues;
  Values foundValues;
  QovRyx::ProgressReport::Advance(wanted.GetSize());
  Util::WithFileContext(inputPath, [&] { wanted.GetValues(wantedValues); });
  const std::string error = TryToRead([&] { found.GetValues(foundValues); });
  if (!error.empty()) return error;
  return DescribeValueDifference(wantedValues, foundValues, result.HoldsUnsigned(),
                                 wanted.GetWidth());
}

void VerifyArray(const ExpectedNode& node, ExpectedResult& expected, FaultReporter& reporter) {
  const QovRyx::NumericArray none;
  const QovRyx::NumericArray& wanted =
      expected.mpValues != nullptr ? expected.mpValues->mValues : none;
  if (wanted.GetWidth() != expected.mpFound->mValues.GetWidth()) {
    reporter.Report(node, expected, "has items of another width");
  }
  const std::string fault =
      FindValueFault(wanted, *expected.mpFound, reporter.GetInputPath(expected.mInput));
  if (!fault.empty()) reporter.Report(node, expected, fault);
}

void VerifyArrays(ExpectedModel& model, bool integerKinds, FaultReporter& reporter) {
  for (auto& [id, node] : model.mNodes) {
    for (ExpectedResult& expected : node.mResults) {
      const Result* found = expected.mpFound;
      if (found == nullptr || found->mLink.IsLinked() || expected.mLink.IsLinked()) continue;
      if (found->IsIntegerKind() == integerKinds) VerifyArray(node, expected, reporter);
    }
  }
}

/// Compares the values of results that are links to equal results in the output. Groups them by
/// the owner of the values, so that the values of an owner are read once.
class StoredOnceVerifier {
 public:
  StoredOnceVerifier(ExpectedModel& model, const QovRyx::NodeTree& output)
      : mFollower(QovRyx::FollowLinks(output)) {
    for (auto& [id, node] : model.mNodes) {
      for (ExpectedResult& expected : node.mResults) {
        if (expected.mMade != MadeRule::StoredOnce || expected.mpFound == nullptr) continue;
        mLinks[mFollower.FindOwner(*expected.mpFound)].push_back({&node, &expected});
      }
    }
  }

  void Verify(FaultReporter& reporter) const {
    for (const auto& [owner, links] : mLinks) {
      Values found;
      std::string error;
      if (owner != nullptr) error = TryToRead([&] { owner->mValues.GetValues(found); });
      for (const auto& [node, expected] : links) {
        const std::string fault =
            error.empty() ? FindFault(owner, *expected, found, reporter) : error;
        if (!fault.empty()) reporter.Report(*node, *expected, fault);
      }
    }
  }

 private:
  /// A removed owner can leave its values to a result with another kind. The kind word of a result
  /// without a kind has no high byte.
  static bool HasSameType(const Result& wanted, const Result& owner) {
    return wanted.mKindHighByte == owner.mKindHighByte ||
           owner.mKind == QovRyx::Geometry::kNoKind ||
           (wanted.HoldsUnsigned() && owner.HoldsUnsigned());
  }

  static std::string FindFault(const Result* owner, const ExpectedResult& expected,
                               const Values& found, const FaultReporter& reporter) {
    const Result* wanted = expected.mpValues;
    if (owner == nullptr || wanted == nullptr) return "is linked";
    if (!HasSameFlags(wanted, *owner) || !HasSameType(*wanted, *owner)) {
      return "is linked to a result with other flags";
    }
    if (wanted->mValues.GetWidth() != owner->mValues.GetWidth()) {
      return "is linked to a result with items of another width";
    }
    Values values;
    QovRyx::ProgressReport::Advance(wanted->mValues.GetSize());
    Util::WithFileContext(reporter.GetInputPath(expected.mInput),
                          [&] { wanted->mValues.GetValues(values); });
    if (values.size() != found.size()) {
      return fmt::format("is linked to a result with {} values, should have {}", found.size(),
                         values.size());
    }
    return DescribeValueDifference(values, found, expected.mpFound->HoldsUnsigned(),
                                   wanted->mValues.GetWidth());
  }

  struct Link {
    const ExpectedNode* mpNode;
    ExpectedResult* mpExpected;
  };
  QovRyx::LinkFollower<Result> mFollower;
  std::map<const Result*, std::vector<Link>> mLinks;
};

void CompareSets(ExpectedNode& node, const QovRyx::SetColumns& wanted,
                 const QovRyx::SetColumns& found, FaultReporter& reporter) {
  node.mNumSoundSets = 0;
  if (found.size() != wanted.size()) {
    reporter.Report(node, fmt::format("has {} sets, should have {}", found.size(), wanted.size()));
  }
  for (std::size_t i = 0; i < std::min(found.size(), wanted.size()); ++i) {
    Fault fault = reporter.MakeFault(node, DescribeSetDifference(wanted[i], found[i]));
    fault.mSubject = wanted[i].mName;
    if (fault.mText.empty()) {
      ++node.mNumSoundSets;
    } else {
      reporter.Report(std::move(fault));
    }
  }
}

void VerifySets(ExpectedNode& node, const QovRyx::NodeTree& outputNodes, FaultReporter& reporter) {
  const auto* source = dynamic_cast<const QovRyx::NodeSets*>(node.GetContent());
  const auto* entry = outputNodes.FindNode(node.mEntry.mId);
  if (source == nullptr || entry == nullptr) return;
  const auto* output = dynamic_cast<const QovRyx::NodeSets*>(entry->mData.get());
  if (output == nullptr) return;
  const auto wanted = Util::WithFileContext(reporter.GetInputPath(node.mInput),
                                            [source] { return source->GetColumns(); });
  QovRyx::SetColumns found;
  const std::string error = TryToRead([&] { found = output->GetColumns(); });
  if (error.empty()) return CompareSets(node, wanted, found, reporter);
  node.mNumSoundSets = 0;
  reporter.Report(node, error);
}

}  // namespace

void VerifyValues(ExpectedModel& model, const QovRyx::NodeTree& output, FaultReporter& reporter) {
  const QovRyx::ProgressReport progress(CountValueBytes(model));
  VerifyArrays(model, true, reporter);  // the integer kinds are stored first
  VerifyArrays(model, false, reporter);
  StoredOnceVerifier(model, output).Verify(reporter);
  for (auto& [id, node] : model.mNodes) {
    if (node.mSound || node.mNumSoundSets != 0) VerifySets(node, output, reporter);
  }
}

}  // namespace Qov::Tools
