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

/// Takes values one after the other from the part of a stream that can be read, which it holds
/// only a piece of.
class StreamCursor {
 public:
  /// Thrown where more is asked for than there is. The cursor stays where it was.
  struct EndReached {
    std::uint64_t mPosition;
  };

  /// `sound` is how many bytes of `length` can be read. The reader may be null if that is 0.
  StreamCursor(std::string name, std::shared_ptr<QovJbf::StreamReader> reader, std::uint64_t length,
               std::uint64_t sound)
      : mName(std::move(name)), mpReader(std::move(reader)), mLength(length), mSound(sound) {}

  const std::string& GetName() const { return mName; }
  std::uint64_t GetPosition() const { return mPosition; }
  /// Of the whole stream, what cannot be read included.
  std::uint64_t GetLength() const { return mLength; }
  std::uint64_t GetRemaining() const { return mSound - mPosition; }
  /// Whether the stream goes on where the cursor ends, with bytes that cannot be read.
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
  /// As readers take a text: what follows a zero byte is dropped, which is reported. `owner` is
  /// whose text it is.
  std::string TakeText(Findings& findings, const Place& owner = {});
  /// A count of elements of which each takes `leastSize` bytes at the least.
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
