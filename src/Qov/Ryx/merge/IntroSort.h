#pragma once

#include <bit>
#include <cstddef>
#include <utility>
#include <vector>

namespace QovRyx {

/// Introspective sort: quicksort with the median of three as pivot down to runs of 16 elements,
/// heap sort of ranges that need too many partitions, and one insertion sort of all elements at the
/// end.
///
/// It replaces std::sort because the order of equal elements is part of the result, and because
/// T::operator< need not be a strict weak ordering. With another ordering the result is some order
/// of the same elements, because each scan stops at the end of the range.
template <class T>
class IntroSort {
 public:
  explicit IntroSort(std::vector<T>& items) : mItems(items) {}

  void Run() {
    const std::size_t size = mItems.size();
    if (size < 2) return;
    const std::size_t log2 = static_cast<std::size_t>(std::bit_width(size)) - 1;
    QuickSort(0, size, 2 * log2);
    InsertionSort(size);
  }

 private:
  static constexpr std::size_t kRunLength = 16;

  bool Less(std::size_t left, std::size_t right) const { return mItems[left] < mItems[right]; }
  void Swap(std::size_t left, std::size_t right) {
    if (left != right) std::swap(mItems[left], mItems[right]);
  }

  /// Divides [first, last) into runs of at most kRunLength elements. The runs are in order; the
  /// elements of a run are not.
  // NOLINTNEXTLINE(misc-no-recursion): `depth` limits the recursion
  void QuickSort(std::size_t first, std::size_t last, std::size_t depth) {
    while (last - first > kRunLength) {
      if (depth == 0) {
        HeapSort(first, last);
        return;
      }
      --depth;
      MoveMedianToFirst(first, first + 1, first + (last - first) / 2, last - 1);
      const std::size_t cut = Partition(first, last);
      QuickSort(cut, last, depth);
      last = cut;
    }
  }

  void MoveMedianToFirst(std::size_t first, std::size_t a, std::size_t b, std::size_t c) {
    if (Less(a, b)) {
      Swap(first, Less(b, c) ? b : Less(a, c) ? c : a);
    } else {
      Swap(first, Less(a, c) ? a : Less(b, c) ? c : b);
    }
  }

  /// Partitions (pivot, end) by the element at `pivot`. Returns the start of the upper part.
  std::size_t Partition(const std::size_t pivot, const std::size_t end) {
    std::size_t low = pivot + 1;
    std::size_t high = end;
    while (true) {
      while (low < end && Less(low, pivot)) ++low;
      --high;
      while (high > pivot && Less(pivot, high)) --high;
      if (low >= high) return low;
      Swap(low, high);
      ++low;
    }
  }

  void InsertionSort(std::size_t size) {
    for (std::size_t i = 1; i < size; ++i) {
      T value = std::move(mItems[i]);
      std::size_t hole = i;
      // In the first run, an element that is less than the first one moves to the front without
      // comparisons with the elements between.
      const bool toFront = i < kRunLength && value < mItems[0];
      for (; hole > 0 && (toFront || value < mItems[hole - 1]); --hole) {
        mItems[hole] = std::move(mItems[hole - 1]);
      }
      mItems[hole] = std::move(value);
    }
  }

  void HeapSort(std::size_t first, std::size_t last) {
    const std::size_t size = last - first;
    for (std::size_t parent = size / 2; parent-- > 0;) {
      SiftDown(first, parent, size, std::move(mItems[first + parent]));
    }
    for (std::size_t left = size - 1; left > 0; --left) {
      T value = std::move(mItems[first + left]);
      mItems[first + left] = std::move(mItems[first]);
      SiftDown(first, 0, left, std::move(value));
    }
  }

  /// Fills the hole in a heap of `size` elements at `first`. Moves the greater children up until
  /// the hole has no child, and then moves the value up to its place.
  void SiftDown(std::size_t first, std::size_t hole, std::size_t size, T value) {
    const std::size_t top = hole;
    while (2 * hole + 1 < size) {
      std::size_t child = 2 * hole + 2;
      if (child == size || Less(first + child, first + child - 1)) --child;
      mItems[first + hole] = std::move(mItems[first + child]);
      hole = child;
    }
    while (hole > top && mItems[first + (hole - 1) / 2] < value) {
      mItems[first + hole] = std::move(mItems[first + (hole - 1) / 2]);
      hole = (hole - 1) / 2;
    }
    mItems[first + hole] = std::move(value);
  }

  std::vector<T>& mItems;
};

}  // namespace QovRyx
