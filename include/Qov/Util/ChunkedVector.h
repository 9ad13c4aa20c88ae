#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>
#include <vector>

namespace Qov::Util {

/// A sequence whose elements lie in chunks. Only its last chunk moves when it grows, so a long
/// sequence never takes its memory twice. A short sequence takes little more than a std::vector.
template <class T>
class ChunkedVector {
 public:
  /// Visits the elements in order. Stays valid when elements are appended.
  class ConstIterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using pointer = const T*;
    using reference = const T&;

    ConstIterator() = default;
    ConstIterator(const ChunkedVector& elements, std::size_t position)
        : mpElements(&elements), mPosition(position) {}

    reference operator*() const { return (*mpElements)[mPosition]; }
    pointer operator->() const { return &**this; }
    ConstIterator& operator++() {
      ++mPosition;
      return *this;
    }
    ConstIterator operator++(int) {
      ConstIterator before = *this;
      ++mPosition;
      return before;
    }
    friend bool operator==(const ConstIterator& a, const ConstIterator& b) {
      return a.mPosition == b.mPosition;
    }

   private:
    const ChunkedVector* mpElements = nullptr;
    std::size_t mPosition = 0;
  };
  using value_type = T;
  using const_iterator = ConstIterator;

  std::size_t size() const { return mSize; }
  bool empty() const { return mSize == 0; }
  const T& operator[](std::size_t i) const { return mChunks[i / kChunk][i % kChunk]; }
  T& operator[](std::size_t i) { return mChunks[i / kChunk][i % kChunk]; }
  const T& back() const { return (*this)[mSize - 1]; }
  ConstIterator begin() const { return {*this, 0}; }
  ConstIterator end() const { return {*this, mSize}; }

  /// Appends an element. Moves the elements of the last chunk only.
  void push_back(T element) {
    GetOpenChunk().push_back(std::move(element));
    ++mSize;
  }
  /// Lets the last chunk take `count` more elements, or as many as it can hold, without moving.
  void ReserveMore(std::size_t count) {
    if (count == 0) return;
    std::vector<T>& chunk = GetOpenChunk();
    chunk.reserve(chunk.size() + std::min(count, kChunk - chunk.size()));
  }
  /// Removes all elements from position `size` on.
  void Truncate(std::size_t size) {
    if (size >= mSize) return;
    mChunks.resize((size + kChunk - 1) / kChunk);
    if (size % kChunk != 0) mChunks.back().resize(size % kChunk);
    mSize = size;
  }

 private:
  static constexpr std::size_t kChunk = 256;

  /// Returns the chunk that the next element goes to.
  std::vector<T>& GetOpenChunk() {
    if (mChunks.size() * kChunk == mSize) {
      mChunks.emplace_back().reserve(std::min(kChunk, mSize / 4));
    }
    return mChunks.back();
  }

  std::vector<std::vector<T>> mChunks;  ///< All but the last one are full.
  std::size_t mSize = 0;
};

}  // namespace Qov::Util
