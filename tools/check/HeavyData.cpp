#include "check/HeavyData.h"

#include <fmt/format.h>

#include <algorithm>
#include <tuple>
#include <vector>

#include "Plural.h"
#include "Qov/Ryx/Progress.h"
#include "check/MeshCheck.h"
#include "check/ResultCheck.h"
#include "check/SetPieces.h"
#include "check/StreamEnd.h"
#include "diagnostics/ByteShuffle.h"
#include "model/StreamNames.h"

namespace Qov::Tools {
namespace {

/// An item of the heavy stream: an array, or the pieces of a node's sets.
struct Extent {
  StoredNode* mNode = nullptr;
  std::size_t mVariable = 0;
  std::uint64_t mOffset = 0;
  std::uint64_t mEnd = 0;  ///< For sets not known yet.
  bool mIsSets = false;
  bool mIsWanted = false;  ///< True if its values are compared.

  const StoredVariable& GetVariable() const { return mNode->mVariables[mVariable]; }
  /// Orders by place in the stream. Among items with the same bytes a wanted one comes first.
  bool operator<(const Extent& other) const {
    return std::tuple(mOffset, mEnd, !mIsWanted) <
           std::tuple(other.mOffset, other.mEnd, !other.mIsWanted);
  }
  Place At(std::uint64_t byte) const {
    Place place = Place::InStream(QovRyx::kHeavyData, byte);
    return mIsSets ? mNode->At(std::move(place)) : mNode->At(std::move(place), mVariable);
  }
};

/// Computes the places of inline arrays, in the order of the tree.
class InlinePlaces {
 public:
  InlinePlaces(Container& container, Findings& findings)
      : mCursor(container.OpenStream(QovRyx::kHeavyData)), mFindings(findings) {}

  void Assign(ModelContent& model) {
    for (StoredNode& node : model.mNodes) {
      for (StoredVariable& variable : node.mVariables) {
        variable.mIsPlaced = !node.HasInlineValues();
      }
    }
    for (StoredNode& node : model.mNodes) {
      if (node.GetType() == NodeType::NodeSets && node.mHasLightData) mSets = &node;
      if (node.GetType() != NodeType::Geometry || !node.HasInlineValues()) continue;
      if (!node.mHasLightData || !PassOverSets()) return;
      PlaceArrays(node);
    }
  }

 private:
  void PlaceArrays(StoredNode& geometry) {
    for (StoredVariable& variable : geometry.mVariables) {
      variable.mOffset = mOffset;
      variable.mIsPlaced = true;
      if (!variable.mLink.IsLinked()) mOffset += variable.mSize;
    }
  }

  /// Skips sets before the values of a geometry. Returns false if their end is not found.
  bool PassOverSets() {
    if (mSets == nullptr) return true;
    const Place place = mSets->At(Place::InStream(mCursor.GetName(), mSets->mSetsOffset));
    if (mSets->mSetsOffset < mCursor.GetPosition()) {
      mFindings.Error("array-overlap", place, "The sets begin within earlier ones.");
      return false;
    }
    try {
      mCursor.MoveTo(mSets->mSetsOffset);
      PassOverSetPieces(mCursor);
      mOffset = mCursor.GetPosition();
    } catch (const StreamCursor::EndReached&) {
      ReportEnd(mCursor, mSets->At({}), "the sets before the arrays", mFindings);
      return false;
    }
    mSets = nullptr;
    return true;
  }

  StreamCursor mCursor;
  Findings& mFindings;
  std::uint64_t mOffset = 0;
  const StoredNode* mSets = nullptr;
};

/// Less than usual, because BlocksAhead decompresses blocks of the next files meanwhile.
constexpr std::uint64_t kReadAheadMemory = std::uint64_t{80} << 20;

/// Checks the items of the stream in one pass, in stored order.
class HeavySweep {
 public:
  HeavySweep(Container& container, MeshCheck& meshes, Findings& findings)
      : mContainer(container),
        mCursor(container.OpenStream(QovRyx::kHeavyData)),
        mMeshes(meshes),
        mFindings(findings) {}

  void Run(ModelContent& model);

 private:
  void Collect(StoredNode& node);
  QovJbf::ReadAhead::Parts PlanReads() const;
  void CheckShape(const StoredNode& node, std::size_t variable);
  void Visit(Extent& extent);
  bool CheckStart(const Extent& extent);
  void CheckOverlap(const Extent& extent);
  void CopySummary(const Extent& extent);
  void VisitArray(const Extent& extent);
  void VisitSets(Extent& extent);
  void ReadValues(const Extent& extent);

  Container& mContainer;
  StreamCursor mCursor;
  MeshCheck& mMeshes;
  Findings& mFindings;
  std::vector<Extent> mExtents;
  std::uint64_t mReached = 0;
  const Extent* mLast = nullptr;  ///< The item that ends at mReached.
};

void HeavySweep::Collect(StoredNode& node) {
  if (!node.mHasLightData) return;
  if (node.GetType() == NodeType::NodeSets) {
    mExtents.push_back({&node, 0, node.mSetsOffset, node.mSetsOffset, true, false});
  }
  for (std::size_t i = 0; i < node.mVariables.size(); ++i) {
    const StoredVariable& variable = node.mVariables[i];
    if (variable.mLink.IsLinked()) continue;
    CheckShape(node, i);
    if (variable.GetNumElements() == 0 || !variable.mIsPlaced) continue;
    // Only inline values store the rest of a size that is not a multiple of 4.
    const std::uint64_t size =
        node.HasInlineValues() ? variable.mSize : QovRyx::kElementSize * variable.GetNumElements();
    mExtents.push_back(
        {&node, i, variable.mOffset, variable.mOffset + size, false, mMeshes.IsWanted(variable)});
  }
}

void HeavySweep::CheckShape(const StoredNode& node, std::size_t variable) {
  const StoredVariable& array = node.mVariables[variable];
  if (array.mSize % QovRyx::kElementSize != 0) {
    mFindings.Warning("array-size", node.At({}, variable),
                      fmt::format("Its size in bytes, {}, is not a multiple of 4.", array.mSize));
  }
  if (array.mWidth == 0 && array.mSize != 0) {
    mFindings.Warning("array-width", node.At({}, variable), "Its width is 0.");
  } else if (array.mWidth != 0 && array.GetNumElements() % array.mWidth != 0) {
    mFindings.Warning("array-width", node.At({}, variable),
                      fmt::format("It has {}, which is not a multiple of its width, {}.",
                                  Plural(array.GetNumElements(), "value"), array.mWidth));
  }
}

void HeavySweep::Run(ModelContent& model) {
  for (StoredNode& node : model.mNodes) Collect(node);
  std::stable_sort(mExtents.begin(), mExtents.end());
  const QovRyx::ProgressReport progress(mCursor.GetLength());
  QovJbf::ReadAhead ahead(PlanReads(), kReadAheadMemory);
  if (mCursor.GetReader() != nullptr) {
    ahead.Provide(*mCursor.GetReader(), mContainer.GetHeavyContents());
  }
  mContainer.DropHeavyContents();
  for (Extent& extent : mExtents) {
    Visit(extent);
    QovRyx::ProgressReport::Advance(extent.mEnd - std::min(extent.mOffset, extent.mEnd));
  }
  if (!model.mIsComplete || mReached >= mCursor.GetLength() || mCursor.IsCutShort()) return;
  mFindings.Warning("stream-rest", Place::InStream(mCursor.GetName(), mReached),
                    Plural(mCursor.GetLength() - mReached, "byte", "follow") + " the last array.");
}

/// Returns the blocks that hold the arrays to read. The cursor reads pieces that are longer than an
/// array.
QovJbf::ReadAhead::Parts HeavySweep::PlanReads() const {
  QovJbf::ReadAhead::Parts parts;
  const QovJbf::StreamReader* reader = mCursor.GetReader();
  std::uint64_t end = 0;
  for (const Extent& extent : mExtents) {
    if (!extent.mIsWanted || reader == nullptr) continue;
    for (std::uint64_t at = std::max(extent.mOffset, end); at < extent.mEnd; at = end) {
      const auto block = reader->FindBlock(at, 1);
      if (!block) break;
      end = block->mStart + block->mRawLength;
      parts.push_back({reader, block->mStart, block->mRawLength});
    }
  }
  return parts;
}

void HeavySweep::Visit(Extent& extent) {
  if (extent.mEnd < extent.mOffset || extent.mEnd > mCursor.GetLength()) {
    mFindings.Error("array-outside", extent.At(extent.mOffset),
                    fmt::format("It should end at byte {}, but the stream ends at byte {}.",
                                extent.mEnd, mCursor.GetLength()));
    return;
  }
  if (!CheckStart(extent)) return;
  if (extent.mIsSets) {
    VisitSets(extent);
  } else {
    VisitArray(extent);
  }
}

/// Compares the begin of an item with the end of the last one. Returns false if it cannot be read.
bool HeavySweep::CheckStart(const Extent& extent) {
  if (extent.mOffset < mReached) {
    CheckOverlap(extent);
    return false;
  }
  if (extent.mOffset > mReached) {
    mFindings.Warning(
        "heavy-gap", extent.At(mReached),
        fmt::format("A gap of {} precedes it.", Plural(extent.mOffset - mReached, "byte")));
  }
  return true;
}

void HeavySweep::CheckOverlap(const Extent& extent) {
  const bool isSame = mLast->mOffset == extent.mOffset && mLast->mEnd == extent.mEnd;
  const std::string other = mLast->At(mLast->mOffset).GetText();
  if (!isSame || extent.mIsSets || mLast->mIsSets) {
    mFindings.Error("array-overlap", extent.At(extent.mOffset),
                    fmt::format("It begins within {}, which ends at byte {}.", other, mReached));
    return;
  }
  mFindings.Warning("array-shared", extent.At(extent.mOffset),
                    fmt::format("It has the same bytes as {}.", other));
  if (extent.mIsWanted) CopySummary(extent);
}

/// Copies the summary of an array with the same bytes if width and layout agree.
void HeavySweep::CopySummary(const Extent& extent) {
  const StoredVariable& source = mLast->GetVariable();
  const StoredVariable& target = extent.GetVariable();
  const bool isAlike = source.mWidth == target.mWidth &&
                       mLast->mNode->HasInlineValues() == extent.mNode->HasInlineValues();
  if (isAlike) mMeshes.CopySummary(source, target);
}

void HeavySweep::VisitArray(const Extent& extent) {
  mReached = extent.mEnd;
  mLast = &extent;
  if (!extent.mIsWanted) return;
  try {
    mCursor.MoveTo(extent.mOffset);
    ReadValues(extent);
  } catch (const StreamCursor::EndReached&) {
    ReportEnd(mCursor, extent.At(0), "the array", mFindings);
  }
}

void HeavySweep::ReadValues(const Extent& extent) {
  const StoredVariable& variable = extent.GetVariable();
  if (QovRyx::kElementSize * variable.GetNumElements() > mCursor.GetRemaining())
    throw StreamCursor::EndReached{extent.mOffset};
  std::vector<std::uint32_t> values(variable.GetNumElements());
  mCursor.TakeBytes(values.data(), values.size() * sizeof(values[0]));
  if (!extent.mNode->HasInlineValues()) {
    QovUtil::UnShuffleMultiVectorBytes(values, variable.mWidth);
  }
  mMeshes.Summarize(variable, values);
}

void HeavySweep::VisitSets(Extent& extent) {
  mLast = &extent;
  try {
    mCursor.MoveTo(extent.mOffset);
    CheckSetPieces(mCursor, *extent.mNode, mFindings);
  } catch (const StreamCursor::EndReached&) {
    ReportEnd(mCursor, extent.At(0), "the sets of the node", mFindings);
  }
  extent.mEnd = mCursor.GetPosition();
  mReached = std::max(mReached, extent.mEnd);
}

}  // namespace

void CheckHeavyData(Container& container, ModelContent& model, Findings& findings) {
  InlinePlaces(container, findings).Assign(model);
  ResultLinks links(model);
  links.Check(findings);
  CheckResults(model, links, findings);
  MeshCheck meshes(model, links);
  HeavySweep(container, meshes, findings).Run(model);
  meshes.Report(findings);
}

}  // namespace Qov::Tools
