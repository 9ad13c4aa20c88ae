#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Qov/Jbf/JbFile.h"
#include "Qov/Util/Raise.h"
#include "StreamNames.h"
#include "container/LoadLimit.h"

namespace QovRyx {

/// Streams that are read into memory completely and share one limit.
struct StreamGroup {
  const char* mContent;  ///< A description for messages.
  std::vector<std::string> mStreams;
};

extern const StreamGroup kTreeStreams;
extern const StreamGroup kViewStreams;
extern const StreamGroup kHistoryStreams;

/// Raises OutOfBounds if the streams of the group in a file that is being read decompress to more
/// bytes than QovJbf::GetLoadLimit() allows. Compression can shorten data by a factor of 1000, so
/// the length of the file is not a bound.
void CheckExpansion(QovJbf::JbFile& file, const StreamGroup& group);

/// Raises OutOfBounds if the streams of the group in a file that is being written take more than
/// `limit` bytes, because the file could not be loaded again. `limit` is QovJbf::GetLoadLimit().
void CheckLoadable(QovJbf::JbFile& file, const StreamGroup& group, std::uint64_t limit);

}  // namespace QovRyx
