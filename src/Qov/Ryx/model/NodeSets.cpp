#include "Qov/Ryx/NodeSets.h"

#include <limits>
#include <utility>

#include "ModelFormat.h"
#include "Qov/Util/Raise.h"

// The pieces of a node set in the heavy stream, plain:
//   name ends: vector<u32>    0, then for each set the end of its name in the joined names
//   names: string             all names joined
//   value ends: vector<u32>   0, then for each set the end of its values in the joined values
//   values: vector<u32>       all values joined
// Its light data:
//   size of the next fields: u32, 16
//   number of sets: u32
//   offset of the pieces: u64, in uncompressed bytes of the heavy stream
//   number of values: u32

namespace QovRyx {
namespace {

constexpr const char* kSource = "include/Qov/Ryx/NodeSets";

using Qov::Util::Raise;
using ErrorType = Qov::Util::Exception::ErrorType;

/// Reads the pieces of a node set in their order.
class PieceReader {
 public:
  PieceReader(QovJbf::StreamReader& reader, std::uint64_t offset, bool verified)
      : mReader(reader), mOffset(offset), mVerified(verified) {}

  std::vector<std::uint32_t> TakeNumbers() {
    const std::uint32_t count = TakeCount(sizeof(std::uint32_t));
    std::vector<std::uint32_t> numbers(count);
    TakeBytes(numbers.data(), numbers.size() * sizeof(std::uint32_t));
    return numbers;
  }
  std::string TakeText() {
    std::string text(TakeCount(1), '\0');
    TakeBytes(text.data(), text.size());
    return text;
  }
  void Skip(std::uint64_t elementSize) { mOffset += TakeCount(elementSize) * elementSize; }
  std::uint64_t GetOffset() const { return mOffset; }

 private:
  /// Reads the count of a piece. Raises OutOfBounds if the stream ends before its last element.
  std::uint32_t TakeCount(std::uint64_t elementSize) {
    std::uint32_t count = 0;
    TakeBytes(&count, kCountSize);
    if (count > (mReader.GetLength() - mOffset) / elementSize) {
      Qov::Util::RaiseNotEnoughBytes(kSource);
    }
    return count;
  }
  void TakeBytes(void* target, std::size_t n) {
    if (n != 0 && mVerified) mReader.ReadVerified(mOffset, target, n);
    if (n != 0 && !mVerified) mReader.Read(mOffset, target, n);
    mOffset += n;
  }

  QovJbf::StreamReader& mReader;
  std::uint64_t mOffset;
  bool mVerified;
};

/// Raises MismatchError unless the ends begin with 0, never decrease, and end at `length`.
void CheckEnds(const std::vector<std::uint32_t>& ends, std::size_t numSets, std::size_t length) {
  bool sound = ends.size() == numSets + 1 && ends.front() == 0 && ends.back() == length;
  for (std::size_t i = 1; sound && i < ends.size(); ++i) sound = ends[i - 1] <= ends[i];
  if (!sound) Raise(kSource, ErrorType::MismatchError, "The pieces of a node set disagree");
}

}  // namespace

void SetColumns::Add(std::string_view name, std::span<const std::uint32_t> values) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::uint32_t>::max();
  if (name.size() > kMost - mNames.size() || values.size() > kMost - mValues.size()) {
    Raise(kSource, ErrorType::OutOfBounds, "The node sets of one node hold more than 2^32 - 1");
  }
  mNames += name;
  mNameEnds.push_back(static_cast<std::uint32_t>(mNames.size()));
  mValues.insert(mValues.end(), values.begin(), values.end());
  mValueEnds.push_back(static_cast<std::uint32_t>(mValues.size()));
}

SetColumns NodeSets::ReadColumns(bool verified) const {
  PieceReader pieces(*mpReader, mSourceOffset, verified);
  SetColumns columns;
  columns.mNameEnds = pieces.TakeNumbers();
  columns.mNames = pieces.TakeText();
  CheckEnds(columns.mNameEnds, mNumSets, columns.mNames.size());
  columns.mValueEnds = pieces.TakeNumbers();
  columns.mValues = pieces.TakeNumbers();
  CheckEnds(columns.mValueEnds, mNumSets, columns.mValues.size());
  CountBytes(pieces.GetOffset() - mSourceOffset);
  return columns;
}

void NodeSets::CountBytes(std::uint64_t numBytes) const {
  const std::shared_ptr<std::uint64_t> pAll = std::exchange(mpNumBytes, nullptr);
  if (!pAll) return;
  *pAll += numBytes;
  if (*pAll / kMostShares <= mpReader->GetLength()) return;
  mpNumBytes = pAll;  // the next call must fail too
  Raise(kSource, ErrorType::OutOfBounds, "Too many node sets share their bytes");
}

std::vector<NodeSets::Set> NodeSets::GetSets() const {
  const SetColumns columns = GetColumns();
  std::vector<Set> sets(columns.size());
  for (std::size_t i = 0; i < sets.size(); ++i) {
    const SetColumns::View set = columns[i];
    sets[i] = {std::string(set.mName), {set.mValues.begin(), set.mValues.end()}};
  }
  return sets;
}

SetColumns NodeSets::LoadColumns(bool verified) const {
  if (!mpReader) return mColumns;
  return Qov::Util::WithFileContext(mpReader->GetPath(), [&] { return ReadColumns(verified); });
}

void NodeSets::SetSets(const std::vector<Set>& sets) {
  mNumSets = static_cast<std::uint32_t>(sets.size());
  mColumns = {};
  for (const Set& set : sets) mColumns.Add(set.mName, set.mValues);
  mpReader.reset();
}

void NodeSets::SaveDataBlocks(QovJbf::JbFile& file, const std::string& heavyKey, bool /*shuffle*/) {
  const SetColumns columns = LoadColumns(false);
  QovJbf::Index& index = file.GetIndex();
  mStoredOffset = index.HasStream(heavyKey) ? index.GetStreamLength(heavyKey) : 0;
  mNumStoredValues = static_cast<std::uint32_t>(columns.mValues.size());
  index.Put(heavyKey, columns.mNameEnds);
  index.Put(heavyKey, columns.mNames);
  index.Put(heavyKey, columns.mValueEnds);
  index.Put(heavyKey, columns.mValues);
}

void NodeSets::LoadDataBlocks(std::shared_ptr<QovJbf::StreamReader> reader,
                              std::shared_ptr<std::uint64_t> pNumBytes) {
  mpReader = std::move(reader);
  mpNumBytes = std::move(pNumBytes);
  mSourceOffset = mStoredOffset;
}

std::uint64_t NodeSets::GetLeastStoredSize() const {
  const std::uint64_t numEnds = 2 * (std::uint64_t{mNumSets} + 1);
  return kSetPieceElementSizes.size() * kCountSize +
         (numEnds + mNumStoredValues) * sizeof(std::uint32_t);
}

std::uint64_t NodeSets::GetStoredEnd() const {
  PieceReader pieces(*mpReader, mSourceOffset, true);
  for (const std::uint64_t elementSize : kSetPieceElementSizes) pieces.Skip(elementSize);
  return pieces.GetOffset();
}

void NodeSets::WriteLightData(QovJbf::JbFile& file, const std::string& lightKey) const {
  QovJbf::Index& index = file.GetIndex();
  index.Put(lightKey, kNodeSetsFieldsSize);
  index.Put(lightKey, mNumSets);
  index.Put(lightKey, mStoredOffset);
  index.Put(lightKey, mNumStoredValues);
}

void NodeSets::ReadLightData(QovJbf::JbFile& file, const std::string& lightKey) {
  std::uint32_t size = 0;
  file.Require(lightKey, size);
  file.Require(lightKey, mNumSets);
  file.Require(lightKey, mStoredOffset);
  file.Require(lightKey, mNumStoredValues);
}

}  // namespace QovRyx
