#include "check/SetPieces.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "Plural.h"

// name ends: vector<u32>, names: string, value ends: vector<u32>, values: vector<u32>

namespace Qov::Tools {
namespace {

using QovRyx::kElementSize;

/// Summary of a vector of ends.
struct Ends {
  std::uint64_t mPosition = 0;
  std::uint32_t mCount = 0;
  std::uint32_t mFirst = 0;
  std::uint32_t mLast = 0;
  bool mFalls = false;
};

Ends TakeEnds(StreamCursor& cursor) {
  Ends ends;
  ends.mPosition = cursor.GetPosition();
  ends.mCount = cursor.TakeCount(kElementSize);
  for (std::uint32_t i = 0; i < ends.mCount; ++i) {
    const auto end = cursor.Take<std::uint32_t>();
    if (i == 0) ends.mFirst = end;
    ends.mFalls = ends.mFalls || end < ends.mLast;
    ends.mLast = end;
  }
  return ends;
}

std::uint32_t PassOverPiece(StreamCursor& cursor, std::uint64_t elementSize) {
  const std::uint32_t count = cursor.TakeCount(elementSize);
  cursor.PassOver(count * elementSize);
  return count;
}

/// Reads the joined names and returns their number of bytes. Reports the first zero byte.
std::uint32_t TakeNames(StreamCursor& cursor, const StoredNode& node, Findings& findings) {
  const std::uint32_t length = cursor.TakeCount(1);
  std::array<char, 4096> piece{};
  bool isReported = false;
  for (std::uint32_t left = length; left > 0;) {
    const auto size = static_cast<std::uint32_t>(std::min<std::size_t>(left, piece.size()));
    const std::uint64_t start = cursor.GetPosition();
    cursor.TakeBytes(piece.data(), size);
    const void* zero = std::memchr(piece.data(), 0, size);
    if (zero != nullptr && !isReported) {
      const auto at =
          start + static_cast<std::uint64_t>(static_cast<const char*>(zero) - piece.data());
      findings.Warning("zero-byte", node.At(Place::InStream(cursor.GetName(), at)),
                       "The name of a set contains a zero byte; other programs end it there.");
      isReported = true;
    }
    left -= size;
  }
  return length;
}

/// Compares ends with the array that they divide, which has `length` elements.
void CheckEnds(const Ends& ends, std::uint32_t length, const char* what, const StoredNode& node,
               const StreamCursor& cursor, Findings& findings) {
  std::string trouble;
  if (ends.mCount != std::uint64_t{node.mNumSets} + 1) {
    trouble = fmt::format("The node has {}, but {} of {}.", Plural(node.mNumSets, "set"),
                          Plural(ends.mCount, "end"), what);
  } else if (ends.mFirst != 0 || ends.mFalls) {
    trouble = fmt::format("The ends of {} do not ascend from 0.", what);
  } else if (ends.mLast != length) {
    trouble =
        fmt::format("The last end of {} is {}, but it should be {}.", what, ends.mLast, length);
  }
  if (trouble.empty()) return;
  findings.Error("set-pieces", node.At(Place::InStream(cursor.GetName(), ends.mPosition)), trouble);
}

}  // namespace

void CheckSetPieces(StreamCursor& cursor, const StoredNode& node, Findings& findings) {
  const Ends nameEnds = TakeEnds(cursor);
  const std::uint32_t namesLength = TakeNames(cursor, node, findings);
  CheckEnds(nameEnds, namesLength, "names", node, cursor, findings);
  const Ends valueEnds = TakeEnds(cursor);
  const std::uint64_t valuesPosition = cursor.GetPosition();
  const std::uint32_t numValues = PassOverPiece(cursor, kElementSize);
  CheckEnds(valueEnds, numValues, "values", node, cursor, findings);
  if (numValues == node.mNumSetValues) return;
  findings.Warning("set-count", node.At(Place::InStream(cursor.GetName(), valuesPosition)),
                   fmt::format("The light data of the node give {} for its sets; there are {}.",
                               Plural(node.mNumSetValues, "value"), numValues));
}

void PassOverSetPieces(StreamCursor& cursor) {
  for (const std::uint64_t elementSize : QovRyx::kSetPieceElementSizes) {
    PassOverPiece(cursor, elementSize);
  }
}

}  // namespace Qov::Tools
