#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "Qov/Jbf/StreamReader.h"
#include "check/Finding.h"

namespace Qov::Tools {

/// Reads values one after another from the readable part of a stream. Keeps only a piece of it in
/// memory.
class StreamCursor {
 public:
  /// Thrown if fewer bytes remain than requested. The cursor does not move.
  struct EndReached {
    std::uint64_t mPosition;
  };

  /// `sound` is the number of readable bytes of `length`. The reader may be null if it is 0.
  StreamCursor(std::string name, std::shared_ptr<QovJbf::StreamReader> reader, std::uint64_t length,
               std::uint64_t sound)
      : mName(std::move(name)), mpReader(std::move(reader)), mLength(length), mSound(sound) {}

  /// Returns null if no bytes are readable.
  const QovJbf::StreamReader* GetReader() const { return mpReader.get(); }
  const std::string& GetName() const { return mName; }
  std::uint64_t GetPosition() const { return mPosition; }
  /// Returns the length of the whole stream, including bytes that cannot be read.
  std::uint64_t GetLength() const { return mLength; }
  std::uint64_t GetRemaining() const { return mSound - mPosition; }
  /// Returns true if bytes that cannot be read follow the readable ones.
  bool IsCutShort() const { return mSound < mLength; }
  bool IsAtEnd() const { return mPosition == mLength; }

  void MoveTo(std::uint64_t position);
  void TakeBytes(void* target, std::uint64_t n);
  void PassOver(std::uint64_t n);
  template <class T>
  T Take() {
    static_assert(std::is_trivially_copyable_v<T>);
    T value{};
    TakeBytes(&value, sizeof value);
    return value;
  }
  /// Reads a text like readers do: drops the bytes from the first zero byte on, and reports that.
  /// `owner` is the place of the owner of the text.
  std::string TakeText(Findings& findings, const Place& owner = {});
  /// Reads a count of elements with at least `leastSize` bytes each.
  std::uint32_t TakeCount(std::uint64_t leastSize);

 private:
  void Require(std::uint64_t n) const;

  std::string mName;
  std::shared_ptr<QovJbf::StreamReader> mpReader;
  std::uint64_t mLength;
  std::uint64_t mSound;
  std::uint64_t mPosition = 0;
  std::uint64_t mBufferStart = 0;
  std::vector<char> mBuffer;
};

}  // namespace Qov::Tools
