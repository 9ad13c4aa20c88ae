#include "EqualArrays.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <map>
#include <numeric>
#include <tuple>
#include <utility>

#include "MergeSteps.h"
#include "Qov/Ryx/Progress.h"
#include "Qov/Util/FileContext.h"
#include "container/SystemResources.h"
#include "model/HeavyPass.h"
#include "model/ReadPlan.h"

namespace QovRyx {
namespace {

using QovJbf::StreamReader;

/// Bytes that are read at a time.
constexpr std::uint64_t kPieceSize = std::uint64_t{256} << 10;
/// A group of equal hashes is compared again without the arrays that are equal to its first one, at
/// most this often. More different arrays have the same hash only on purpose.
constexpr int kMostRounds = 16;
/// Bytes of blocks that are read ahead.
constexpr std::uint64_t kReadAheadMemory = std::uint64_t{112} << 20;

std::uint64_t GetNumBytes(const NumericArray& array) {
  return array.GetNumElements() * kElementSize;
}

bool HasValues(const NumericArray& array) {
  const auto& loader = array.GetLoader();
  if (loader) return loader->GetCount() != 0 && loader->GetCount() == array.GetNumElements();
  return array.GetMemory() != nullptr && array.GetNumElements() != 0;
}

/// Reads the bytes of arrays in the form in which Save stores them.
class StoredBytes {
 public:
  void Read(const NumericArray& array, std::uint64_t begin, void* target, std::size_t n) {
    if (CanCopyBytes(array, true)) {
      array.GetLoader()->ReadStored(begin, target, n);
      return;
    }
    if (mpLoaded != &array) {
      mpLoaded = nullptr;
      LoadStoredForm(array, true, mValues);
      mpLoaded = &array;
    }
    std::memcpy(target, reinterpret_cast<const unsigned char*>(mValues.data()) + begin, n);
  }

  /// Frees the memory of an array that is not stored as Save stores it.
  void Drop() {
    mpLoaded = nullptr;
    mValues = {};
  }

  /// Calls `use(bytes, n)` for each piece of `size` bytes, as long as it returns true.
  template <class Use>
  void ForEachPiece(const NumericArray& array, std::uint64_t begin, std::uint64_t size, Use use) {
    mPiece.resize(std::min(size, kPieceSize));
    for (std::uint64_t done = 0; done < size;) {
      const std::size_t n = std::min(size - done, kPieceSize);
      Read(array, begin + done, mPiece.data(), n);
      ProgressReport::Advance(0);  // the task can be cancelled here
      if (!use(mPiece.data(), n)) return;
      done += n;
    }
  }

 private:
  const NumericArray* mpLoaded = nullptr;
  std::vector<std::uint32_t> mValues;  ///< The bytes of the array that is loaded.
  std::vector<unsigned char> mPiece;
};

}  // namespace

class ArraySearch::State {
 public:
  State(Candidates arrays, const SearchLimits& limits);
  std::vector<std::size_t> ListToRead() const;
  Examined Examine(std::size_t i);
  EqualArrays Finish();

 private:
  /// The file and the offset of an array. Arrays in memory have file 0.
  using Place = std::pair<std::size_t, std::uint64_t>;
  struct Group {
    std::vector<std::size_t> mArrays;  ///< In ascending order.
    std::uint64_t mCompared = 0;       ///< Bytes of the first array that were compared.
  };
  using Groups = std::vector<Group>;
  /// A part of the first array of a group.
  struct Window {
    Group* mpGroup;
    std::uint64_t mBegin;
    std::vector<unsigned char> mBytes;
  };
  struct Comparison {
    Place mPlace;
    std::size_t mArray;
    const Window* mpWindow;
  };

  std::vector<std::size_t> FindPlaces();
  Groups GroupBySize(std::vector<std::size_t> arrays) const;
  template <class KeyOf>
  Groups GroupBy(std::vector<std::size_t> arrays, KeyOf keyOf) const;
  Groups GroupByHash();
  KeptArrays::Key Hash(std::size_t i, KeptArrays::Bytes& bytes);
  void Watch(std::size_t i);
  void SetEqual(std::size_t kept, std::size_t other);
  Groups Compare(Groups groups);
  void CompareWindows(std::vector<Window>& windows);
  void CompareWith(const Window& window, std::size_t array);
  Groups SetFirst(const Groups& groups);
  void GiveUp(const Group& group) { mResult.mNotCompared += group.mArrays.size() - 1; }
  bool IsGivenUp(std::size_t i) const;
  Group DropGivenUp(const Group& group);
  void Verify() const;

  const NumericArray& At(std::size_t i) const { return *mArrays[i].mpArray; }
  Place GetPlace(std::size_t i) const;

  const Candidates mArrays;
  SearchLimits mLimits;
  Groups mSizeGroups;         ///< Arrays of which others have the same size and width.
  std::vector<bool> mIsRead;  ///< True for the arrays of these groups.
  std::vector<KeptArrays::Key> mHashes;
  KeptArrays mKept;
  std::map<const StreamReader*, std::size_t> mFiles;  ///< Numbers from 1, by first appearance.
  std::vector<StreamReader*> mReaders;                ///< Files of arrays that were read.
  SkippedBytes mSkipped;
  StoredBytes mBytes;
  std::map<std::size_t, std::vector<std::size_t>> mEqualToKept;
  std::vector<bool> mDiffers;  ///< True for arrays that differ from the first of their group.
  EqualArrays mResult;
};

ArraySearch::State::State(Candidates arrays, const SearchLimits& limits)
    : mArrays(std::move(arrays)),
      mLimits(limits),
      mIsRead(mArrays.size()),
      mHashes(mArrays.size()),
      mKept(limits.mKept),
      mSkipped(limits.mSkips),
      mDiffers(mArrays.size()) {
  const QovJbf::SystemResources resources;
  const std::uint64_t free = std::min(resources.GetFreeMemory(), resources.GetFreeAddressSpace());
  mLimits.mMemory = std::min(mLimits.mMemory, std::max(free / 4, kPieceSize));
  mResult.mFirst.resize(mArrays.size());
  std::iota(mResult.mFirst.begin(), mResult.mFirst.end(), std::size_t{0});
  mSizeGroups = GroupBySize(FindPlaces());
  for (const Group& group : mSizeGroups) {
    for (const std::size_t i : group.mArrays) mIsRead[i] = true;
  }
}

EqualArrays ArraySearch::State::Finish() {
  Groups groups = GroupByHash();
  for (int round = 0; round < kMostRounds && !groups.empty(); ++round) {
    groups = Compare(std::move(groups));
  }
  for (const Group& group : groups) GiveUp(group);
  Verify();
  for (std::size_t& first : mResult.mFirst) first = mResult.mFirst[first];
  return std::move(mResult);
}

/// Returns the first array at each place. Other arrays at the place are equal to it without being
/// read.
std::vector<std::size_t> ArraySearch::State::FindPlaces() {
  using Source = std::tuple<const void*, std::uint64_t, std::uint64_t, int, int>;
  std::map<Source, std::size_t> places;
  std::vector<std::size_t> firsts;
  for (std::size_t i = 0; i < mArrays.size(); ++i) {
    const NumericArray& array = At(i);
    if (!HasValues(array)) continue;
    const DataLoader* loader = array.GetLoader().get();
    if (loader != nullptr) mFiles.try_emplace(&loader->GetReader(), mFiles.size() + 1);
    const Source source = loader == nullptr
                              ? Source{array.GetMemory(), 0, array.GetSize(), array.GetWidth(), -1}
                              : Source{&loader->GetReader(), loader->GetOffset(), array.GetSize(),
                                       array.GetWidth(), loader->GetShuffledWidth()};
    const auto [place, isNew] = places.try_emplace(source, i);
    if (isNew) firsts.push_back(i);
    mResult.mFirst[i] = place->second;
  }
  return firsts;
}

ArraySearch::State::Place ArraySearch::State::GetPlace(std::size_t i) const {
  const DataLoader* loader = At(i).GetLoader().get();
  if (loader == nullptr) return {0, 0};
  return {mFiles.at(&loader->GetReader()), loader->GetOffset()};
}

/// Returns the groups of two or more arrays with equal keys.
template <class KeyOf>
ArraySearch::State::Groups ArraySearch::State::GroupBy(std::vector<std::size_t> arrays,
                                                       KeyOf keyOf) const {
  std::sort(arrays.begin(), arrays.end(), [&keyOf](std::size_t a, std::size_t b) {
    return std::pair(keyOf(a), a) < std::pair(keyOf(b), b);
  });
  Groups groups;
  for (auto begin = arrays.begin(); begin != arrays.end();) {
    const auto end = std::find_if(begin, arrays.end(),
                                  [&](std::size_t array) { return keyOf(array) != keyOf(*begin); });
    if (end - begin > 1) groups.push_back({{begin, end}});
    begin = end;
  }
  return groups;
}

ArraySearch::State::Groups ArraySearch::State::GroupBySize(std::vector<std::size_t> arrays) const {
  return GroupBy(std::move(arrays),
                 [this](std::size_t i) { return std::pair(At(i).GetSize(), At(i).GetWidth()); });
}

std::vector<std::size_t> ArraySearch::State::ListToRead() const {
  std::vector<std::pair<Place, std::size_t>> order;
  for (std::size_t i = 0; i < mArrays.size(); ++i) {
    if (mIsRead[i]) order.emplace_back(GetPlace(i), i);
  }
  std::sort(order.begin(), order.end());
  std::vector<std::size_t> arrays;
  arrays.reserve(order.size());
  for (const auto& [place, i] : order) arrays.push_back(i);
  return arrays;
}

ArraySearch::Examined ArraySearch::State::Examine(std::size_t i) {
  if (mResult.mFirst[i] != i) return {Verdict::Equal, nullptr};
  if (!mIsRead[i]) return {};
  Watch(i);
  if (IsGivenUp(i)) return {};
  Examined examined;
  mHashes[i] = Hash(i, examined.mpBytes);
  const auto same = examined.mpBytes ? mKept.Find(mHashes[i], examined.mpBytes) : std::nullopt;
  if (same) {
    SetEqual(*same, i);
    examined.mVerdict = Verdict::Equal;
  } else if (mKept.Add(mHashes[i], i, examined.mpBytes, mArrays[i].mIsLikely)) {
    examined.mVerdict = Verdict::Undecided;
  }
  return examined;
}

void ArraySearch::State::Watch(std::size_t i) {
  const auto& loader = At(i).GetLoader();
  if (!loader || (!mReaders.empty() && mReaders.back() == &loader->GetReader())) return;
  mReaders.push_back(&loader->GetReader());
  mSkipped.Watch(loader->GetReader());
}

/// Returns the groups of arrays that have equal hashes and are not known to be equal.
ArraySearch::State::Groups ArraySearch::State::GroupByHash() {
  Groups equal;
  for (const Group& group : mSizeGroups) {
    Group unequal = group;
    std::erase_if(unequal.mArrays, [this](std::size_t i) { return mResult.mFirst[i] != i; });
    if (unequal.mArrays.empty()) continue;
    std::vector<std::size_t> rest = DropGivenUp(unequal).mArrays;
    Groups parts = GroupBy(std::move(rest), [this](std::size_t i) { return mHashes[i]; });
    std::move(parts.begin(), parts.end(), std::back_inserter(equal));
  }
  return equal;
}

/// Returns the hash of an array, and its bytes if it is read as a whole.
KeptArrays::Key ArraySearch::State::Hash(std::size_t i, KeptArrays::Bytes& bytes) {
  const NumericArray& array = At(i);
  const std::uint64_t size = GetNumBytes(array);
  XXH128_hash_t hash;
  if (size <= mLimits.mWhole) {
    auto all =
        std::make_shared<ArrayBytes>(ArrayBytes{QovJbf::AllocateBuffer(kMergeSource, size), size});
    mBytes.Read(array, 0, all->mData.get(), size);
    mBytes.Drop();
    ProgressReport::Advance(0);
    hash = XXH3_128bits(all->mData.get(), size);
    bytes = std::move(all);
  } else {
    XXH3_state_t state;
    XXH3_128bits_reset(&state);
    mBytes.ForEachPiece(array, 0, size, [&state](const unsigned char* piece, std::size_t n) {
      XXH3_128bits_update(&state, piece, n);
      return true;
    });
    hash = XXH3_128bits_digest(&state);
  }
  return {array.GetSize(), array.GetWidth(), hash.high64 & mLimits.mHashMask,
          hash.low64 & mLimits.mHashMask};
}

/// Makes two arrays equal, of which the first one may already be equal to another. The earlier one
/// becomes the first one of both.
void ArraySearch::State::SetEqual(std::size_t kept, std::size_t other) {
  std::size_t& first = mResult.mFirst[kept];
  if (other < first) {
    for (std::size_t& i : mEqualToKept[kept]) mResult.mFirst[i] = other;
    first = other;
  } else {
    mResult.mFirst[other] = first;
  }
  mEqualToKept[kept].push_back(other);
}

/// Compares the first array of each group with the others. Returns the groups of those that differ
/// from it.
ArraySearch::State::Groups ArraySearch::State::Compare(Groups groups) {
  std::sort(groups.begin(), groups.end(), [this](const Group& a, const Group& b) {
    return GetPlace(a.mArrays[0]) < GetPlace(b.mArrays[0]);
  });
  std::vector<Window> windows;
  std::uint64_t room = mLimits.mMemory;
  for (Group& group : groups) {
    const std::uint64_t size = GetNumBytes(At(group.mArrays[0]));
    for (std::uint64_t begin = 0; begin < size; begin += mLimits.mMemory) {
      const std::uint64_t n = std::min(mLimits.mMemory, size - begin);
      if (n > room) {
        CompareWindows(windows);
        room = mLimits.mMemory;
      }
      windows.push_back({&group, begin, std::vector<unsigned char>(n)});
      room -= n;
    }
  }
  CompareWindows(windows);
  return SetFirst(groups);
}

/// Compares these windows, except those of files that are given up, and removes them.
void ArraySearch::State::CompareWindows(std::vector<Window>& windows) {
  std::vector<Comparison> order;
  for (Window& window : windows) {
    const std::vector<std::size_t>& arrays = window.mpGroup->mArrays;
    if (IsGivenUp(arrays[0])) continue;
    mBytes.Read(At(arrays[0]), window.mBegin, window.mBytes.data(), window.mBytes.size());
    window.mpGroup->mCompared += window.mBytes.size();
    for (std::size_t i = 1; i < arrays.size(); ++i) {
      const auto [file, offset] = GetPlace(arrays[i]);
      order.push_back({{file, offset + window.mBegin}, arrays[i], &window});
    }
  }
  std::sort(order.begin(), order.end(), [](const Comparison& a, const Comparison& b) {
    return std::pair(a.mPlace, a.mArray) < std::pair(b.mPlace, b.mArray);
  });
  for (const Comparison& comparison : order) CompareWith(*comparison.mpWindow, comparison.mArray);
  windows.clear();
}

void ArraySearch::State::CompareWith(const Window& window, std::size_t array) {
  if (mDiffers[array] || IsGivenUp(array)) return;
  const unsigned char* expected = window.mBytes.data();
  mBytes.ForEachPiece(At(array), window.mBegin, window.mBytes.size(),
                      [&](const unsigned char* bytes, std::size_t n) {
                        mDiffers[array] = std::memcmp(bytes, expected, n) != 0;
                        expected += n;
                        return !mDiffers[array];
                      });
}

ArraySearch::State::Groups ArraySearch::State::SetFirst(const Groups& groups) {
  Groups rest;
  for (const Group& group : groups) {
    const std::size_t first = group.mArrays[0];
    Group others;
    if (group.mCompared < GetNumBytes(At(first))) {
      others = DropGivenUp(group);
      for (const std::size_t i : group.mArrays) mDiffers[i] = false;
    } else {
      for (const std::size_t i : group.mArrays) {
        if (i != first && IsGivenUp(i)) {
          ++mResult.mNotCompared;
        } else if (mDiffers[i]) {
          others.mArrays.push_back(i);
        } else {
          mResult.mFirst[i] = first;
        }
        mDiffers[i] = false;
      }
    }
    if (others.mArrays.size() > 1) rest.push_back(std::move(others));
  }
  return rest;
}

/// Returns true if too much of the array's file was skipped. Its reader is watched.
bool ArraySearch::State::IsGivenUp(std::size_t i) const {
  const auto& loader = At(i).GetLoader();
  return loader && mSkipped.AreTooMany(loader->GetReader());
}

/// Returns the arrays of the files that are not given up. Counts the others.
ArraySearch::State::Group ArraySearch::State::DropGivenUp(const Group& group) {
  Group kept;
  for (const std::size_t i : group.mArrays) {
    if (!IsGivenUp(i)) kept.mArrays.push_back(i);
  }
  const std::size_t numDropped = group.mArrays.size() - kept.mArrays.size();
  mResult.mNotCompared += kept.mArrays.empty() ? numDropped - 1 : numDropped;
  return kept;
}

/// Verifies everything that was read, because Save does not read arrays that are shared.
void ArraySearch::State::Verify() const {
  for (StreamReader* reader : mReaders) {
    Qov::Util::WithFileContext(reader->GetPath(), [reader] {
      reader->Verify();
      reader->VerifyBefore(reader->GetEndOfReads());
      reader->GetIdentity().CheckUnchanged();
    });
  }
}

ArraySearch::ArraySearch(Candidates arrays, const SearchLimits& limits)
    : mpState(std::make_unique<State>(std::move(arrays), limits)) {}

ArraySearch::~ArraySearch() = default;

std::vector<std::size_t> ArraySearch::ListToRead() const { return mpState->ListToRead(); }

ArraySearch::Examined ArraySearch::Examine(std::size_t i) { return mpState->Examine(i); }

EqualArrays ArraySearch::Finish() { return mpState->Finish(); }

EqualArrays FindEqualArrays(const ArraySearch::Candidates& arrays, const SearchLimits& limits) {
  ArraySearch search(arrays, limits);
  const std::vector<std::size_t> order = search.ListToRead();
  QovJbf::ReadAhead::Parts reads;
  std::uint64_t numBytes = 0;
  for (const std::size_t i : order) {
    AddPart(*arrays[i].mpArray, reads);
    numBytes += GetNumBytes(*arrays[i].mpArray);
  }
  const ProgressReport report(numBytes);
  {
    const QovJbf::ReadAhead ahead(reads, kReadAheadMemory);
    for (const std::size_t i : order) {
      search.Examine(i);
      ProgressReport::Advance(GetNumBytes(*arrays[i].mpArray));
    }
  }
  return search.Finish();
}

}  // namespace QovRyx
