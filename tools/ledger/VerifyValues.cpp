#include "VerifyValues.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "ErrorText.h"
#include "Qov/Ryx/Progress.h"
#include "Qov/Util/FileContext.h"
#include "StoredValues.h"
#include "VerifyResults.h"
#include "compare/Sets.h"
#include "compare/Values.h"
#include "model/LinkFollower.h"
#include "model/ReadPlan.h"

namespace Qov::Tools {
namespace {

/// Returns an empty text if all values are the same, to the last bit.
std::string DescribeValueDifference(StoredValues& wanted, StoredValues& found, bool integer,
                                    std::uint8_t width) {
  if (wanted.HasSameBytes(found)) return "";
  const ValueComparison comparison =
      CompareValues(wanted.GetValues(), found.GetValues(), integer, nullptr);
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

/// Compares the values of all results. If the output has small blocks, the order is that in which
/// the inputs store them, because the blocks of inputs can be large. Otherwise it is the order of
/// the output.
class ArrayVerifier {
 public:
  ArrayVerifier(ExpectedModel& model, const QovRyx::NodeTree& output) {
    for (const bool integerKinds : {true, false}) CollectArrays(model, integerKinds);
    CollectLinks(model, output);
  }

  /// Reports the faults in the order of the model.
  void Verify(FaultReporter& reporter);

 private:
  struct Task {
    const ExpectedNode* mpNode;
    ExpectedResult* mpExpected;
    const Result* mpOwner;  ///< Has the values in the output; null for a link without a target.
    bool mIsLink;           ///< True if the result is a link to an equal result in the output.
    std::string mFault;

    const Result* GetWanted() const { return mpExpected->mpValues; }
  };
  /// Values of owners of links. Several links have the same owner.
  struct OwnerValues {
    StoredValues mValues;
    std::string mError;
  };
  static constexpr std::uint32_t kMostSmallBlock = std::uint32_t{32} << 20;
  /// Less than usual, because values of owners are in memory, too. A block of 60 MB of an input is
  /// read while the next one is decompressed, beside the blocks of the output.
  static constexpr std::uint64_t kReadAheadMemory = std::uint64_t{148} << 20;
  static constexpr std::uint64_t kMostOwnerBytes = std::uint64_t{32} << 20;

  void CollectArrays(ExpectedModel& model, bool integerKinds);
  void CollectLinks(ExpectedModel& model, const QovRyx::NodeTree& output);
  bool HasSmallBlocks() const;
  std::vector<Task*> SortByOutput();
  std::vector<Task*> SortByInput();
  QovJbf::ReadAhead::Parts PlanReads(const std::vector<Task*>& order) const;
  std::string FindFault(const Task& task, const std::string& inputPath);
  std::string FindLinkFault(const Task& task, const std::string& inputPath);
  OwnerValues& ReadOwner(const Result& owner);

  std::vector<Task> mTasks;
  StoredValues mWanted;
  StoredValues mFound;
  std::map<const Result*, OwnerValues> mOwners;
  std::uint64_t mNumOwnerBytes = 0;
};

void ArrayVerifier::CollectArrays(ExpectedModel& model, bool integerKinds) {
  for (auto& [id, node] : model.mNodes) {
    for (ExpectedResult& expected : node.mResults) {
      const Result* found = expected.mpFound;
      if (found == nullptr || found->mLink.IsLinked() || expected.mLink.IsLinked()) continue;
      if (found->IsIntegerKind() != integerKinds) continue;
      mTasks.push_back({&node, &expected, found, false, ""});
    }
  }
}

void ArrayVerifier::CollectLinks(ExpectedModel& model, const QovRyx::NodeTree& output) {
  QovRyx::LinkFollower<Result> follower = QovRyx::FollowLinks(output);
  for (auto& [id, node] : model.mNodes) {
    for (ExpectedResult& expected : node.mResults) {
      if (expected.mMade != MadeRule::StoredOnce || expected.mpFound == nullptr) continue;
      mTasks.push_back({&node, &expected, follower.FindOwner(*expected.mpFound), true, ""});
    }
  }
}

/// Returns true if blocks of the output can be decompressed more than once.
bool ArrayVerifier::HasSmallBlocks() const {
  return std::all_of(mTasks.begin(), mTasks.end(), [](const Task& task) {
    const auto* loader =
        task.mpOwner == nullptr ? nullptr : task.mpOwner->mValues.GetLoader().get();
    if (loader == nullptr) return true;
    const auto block = loader->GetReader().FindBlock(loader->GetOffset(), 1);
    return !block || block->mRawLength <= kMostSmallBlock;
  });
}

/// Returns the links after all others, those of an owner together.
std::vector<ArrayVerifier::Task*> ArrayVerifier::SortByOutput() {
  std::vector<Task*> order;
  order.reserve(mTasks.size());
  for (Task& task : mTasks) order.push_back(&task);
  std::stable_sort(order.begin(), order.end(), [](const Task* a, const Task* b) {
    return std::pair(a->mIsLink, a->mIsLink ? a->mpOwner : nullptr) <
           std::pair(b->mIsLink, b->mIsLink ? b->mpOwner : nullptr);
  });
  return order;
}

std::vector<ArrayVerifier::Task*> ArrayVerifier::SortByInput() {
  using Place = std::pair<std::size_t, std::uint64_t>;
  std::map<const QovJbf::StreamReader*, std::size_t> files;
  std::vector<std::pair<Place, Task*>> places;
  for (Task& task : mTasks) {
    const QovRyx::DataLoader* loader =
        task.GetWanted() == nullptr ? nullptr : task.GetWanted()->mValues.GetLoader().get();
    Place place;
    if (loader != nullptr) {
      const auto [file, isNew] = files.try_emplace(&loader->GetReader(), files.size() + 1);
      place = {file->second, loader->GetOffset()};
    }
    places.emplace_back(place, &task);
  }
  std::stable_sort(places.begin(), places.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<Task*> order;
  order.reserve(places.size());
  for (const auto& [place, task] : places) order.push_back(task);
  return order;
}

QovJbf::ReadAhead::Parts ArrayVerifier::PlanReads(const std::vector<Task*>& order) const {
  QovJbf::ReadAhead::Parts parts;
  std::set<const Result*> owners;
  for (const Task* task : order) {
    if (task->GetWanted() != nullptr) QovRyx::AddPart(task->GetWanted()->mValues, parts);
    const Result* owner = task->mpOwner;
    if (owner != nullptr && (!task->mIsLink || owners.insert(owner).second)) {
      QovRyx::AddPart(owner->mValues, parts);
    }
  }
  return parts;
}

void ArrayVerifier::Verify(FaultReporter& reporter) {
  const std::vector<Task*> order = HasSmallBlocks() ? SortByInput() : SortByOutput();
  {
    const QovJbf::ReadAhead ahead(PlanReads(order), kReadAheadMemory);
    for (Task* task : order) {
      const std::string& inputPath = reporter.GetInputPath(task->mpExpected->mInput);
      task->mFault = task->mIsLink ? FindLinkFault(*task, inputPath) : FindFault(*task, inputPath);
    }
  }
  for (const Task& task : mTasks) {
    const std::uint8_t width = task.GetWanted() == nullptr ? QovRyx::NumericArray().GetWidth()
                                                           : task.GetWanted()->mValues.GetWidth();
    if (!task.mIsLink && width != task.mpOwner->mValues.GetWidth()) {
      reporter.Report(*task.mpNode, *task.mpExpected, "has items of another width");
    }
    if (!task.mFault.empty()) reporter.Report(*task.mpNode, *task.mpExpected, task.mFault);
  }
}

/// Returns the fault of the values of a result; empty if there is none.
std::string ArrayVerifier::FindFault(const Task& task, const std::string& inputPath) {
  const QovRyx::NumericArray none;
  const QovRyx::NumericArray& wanted =
      task.GetWanted() != nullptr ? task.GetWanted()->mValues : none;
  const QovRyx::NumericArray& found = task.mpOwner->mValues;
  if (wanted.GetNumElements() != found.GetNumElements()) {
    return fmt::format("has {} values, should have {}", found.GetNumElements(),
                       wanted.GetNumElements());
  }
  QovRyx::ProgressReport::Advance(wanted.GetSize());
  Util::WithFileContext(inputPath, [&] { mWanted.Read(wanted); });
  const std::string error = TryToRead([&] { mFound.Read(found); });
  if (!error.empty()) return error;
  return DescribeValueDifference(mWanted, mFound, task.mpOwner->HoldsUnsigned(), wanted.GetWidth());
}

/// Returns true if the types of both values are the same. A removed owner can leave its values to a
/// result with another kind. The kind word of a result without a kind has no high byte.
bool HasSameType(const Result& wanted, const Result& owner) {
  return wanted.mKindHighByte == owner.mKindHighByte || owner.mKind == QovRyx::Geometry::kNoKind ||
         (wanted.HoldsUnsigned() && owner.HoldsUnsigned());
}

/// Returns the fault of a result that is a link to an equal result in the output; empty if there is
/// none.
std::string ArrayVerifier::FindLinkFault(const Task& task, const std::string& inputPath) {
  const Result* owner = task.mpOwner;
  const Result* wanted = task.GetWanted();
  if (owner == nullptr) return "is linked";
  OwnerValues& found = ReadOwner(*owner);
  if (!found.mError.empty()) return found.mError;
  if (wanted == nullptr) return "is linked";
  if (!HasSameFlags(wanted, *owner) || !HasSameType(*wanted, *owner)) {
    return "is linked to a result with other flags";
  }
  if (wanted->mValues.GetWidth() != owner->mValues.GetWidth()) {
    return "is linked to a result with items of another width";
  }
  QovRyx::ProgressReport::Advance(wanted->mValues.GetSize());
  Util::WithFileContext(inputPath, [&] { mWanted.Read(wanted->mValues); });
  if (mWanted.GetSize() != found.mValues.GetSize()) {
    return fmt::format("is linked to a result with {} values, should have {}",
                       found.mValues.GetSize(), mWanted.GetSize());
  }
  return DescribeValueDifference(mWanted, found.mValues, task.mpExpected->mpFound->HoldsUnsigned(),
                                 wanted->mValues.GetWidth());
}

/// Reads the values of an owner, or returns those that are in memory.
ArrayVerifier::OwnerValues& ArrayVerifier::ReadOwner(const Result& owner) {
  const auto known = mOwners.find(&owner);
  if (known != mOwners.end()) return known->second;
  if (mNumOwnerBytes + owner.mValues.GetSize() > kMostOwnerBytes) {
    mOwners.clear();
    mNumOwnerBytes = 0;
  }
  mNumOwnerBytes += owner.mValues.GetSize();
  OwnerValues& read = mOwners[&owner];
  read.mError = TryToRead([&] { read.mValues.Read(owner.mValues); });
  return read;
}

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
  ArrayVerifier(model, output).Verify(reporter);
  for (auto& [id, node] : model.mNodes) {
    if (node.mSound || node.mNumSoundSets != 0) VerifySets(node, output, reporter);
  }
}

}  // namespace Qov::Tools
