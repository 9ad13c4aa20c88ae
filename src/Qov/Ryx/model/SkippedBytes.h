#pragma once

#include <cstdint>
#include <map>

#include "ModelFormat.h"
#include "Qov/Jbf/StreamReader.h"

namespace QovRyx {

/// A limit for the bytes that are decompressed only to reach bytes after them: a number of times
/// the length of the stream, plus an allowance.
struct SkipLimit {
  std::uint64_t mTimes = kMostTimesSkipped;
  std::uint64_t mAllowance = kSkippedAllowance;  ///< Bytes.
};

/// Counts these bytes for several readers.
class SkippedBytes {
 public:
  explicit SkippedBytes(const SkipLimit& limit = {}) : mLimit(limit) {}

  /// Counts the bytes of this reader from the first call on.
  void Watch(const QovJbf::StreamReader& reader) {
    mStarts.try_emplace(&reader, reader.GetNumDiscarded());
  }
  /// Returns true if a reader that is watched has exceeded the limit.
  bool AreTooMany(const QovJbf::StreamReader& reader) const {
    const std::uint64_t skipped = reader.GetNumDiscarded() - mStarts.at(&reader);
    return skipped / mLimit.mTimes > reader.GetLength() + mLimit.mAllowance / mLimit.mTimes;
  }

 private:
  SkipLimit mLimit;
  std::map<const QovJbf::StreamReader*, std::uint64_t> mStarts;
};

}  // namespace QovRyx
