#include "check/StreamCursor.h"

#include <algorithm>

namespace Qov::Tools {
namespace {

constexpr std::uint64_t kPiece = 65536;

}  // namespace

void StreamCursor::Require(std::uint64_t n) const {
  if (n > GetRemaining()) throw EndReached{mPosition};
}

void StreamCursor::MoveTo(std::uint64_t position) {
  if (position > mSound) throw EndReached{mPosition};
  mPosition = position;
}

void StreamCursor::PassOver(std::uint64_t n) {
  Require(n);
  mPosition += n;
}

void StreamCursor::TakeBytes(void* target, std::uint64_t n) {
  Require(n);
  auto* bytes = static_cast<char*>(target);
  while (n > 0) {
    const bool isHeld = mPosition >= mBufferStart && mPosition < mBufferStart + mBuffer.size();
    if (!isHeld) {
      mBufferStart = mPosition;
      mBuffer.resize(std::min(kPiece, GetRemaining()));
      mpReader->Read(mPosition, mBuffer.data(), mBuffer.size());
    }
    const std::uint64_t within = mPosition - mBufferStart;
    const std::uint64_t part = std::min(n, mBuffer.size() - within);
    std::memcpy(bytes, mBuffer.data() + within, part);
    bytes += part;
    mPosition += part;
    n -= part;
  }
}

std::uint32_t StreamCursor::TakeCount(std::uint64_t leastSize) {
  const std::uint64_t start = mPosition;
  const auto count = Take<std::uint32_t>();
  if (count <= GetRemaining() / leastSize) return count;
  mPosition = start;
  throw EndReached{start};
}

std::string StreamCursor::TakeText(Findings& findings, const Place& owner) {
  const std::uint64_t start = mPosition;
  std::string text(TakeCount(1), '\0');
  TakeBytes(text.data(), text.size());
  const std::size_t length = text.size();
  text.resize(std::min(length, text.find('\0')));
  if (text.size() == length) return text;
  Place place = owner;
  place.mStream = mName;
  place.mByte = start;
  ReportZeroByte(std::move(place), text, length, findings);
  return text;
}

}  // namespace Qov::Tools
