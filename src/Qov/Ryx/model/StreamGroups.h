#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Qov/Jbf/LoadLimit.h"
#include "Qov/Ryx/StreamNames.h"
#include "Qov/Util/Raise.h"

namespace QovRyx {

/// Streams that are read into memory completely and share one limit.
struct StreamGroup {
  const char* mContent;
  std::vector<std::string> mStreams;
};

inline const StreamGroup kTreeStreams{"The descriptions of nodes and results",
                                      {kRyxTree, kLightData, kAttributes, kResources}};
inline const StreamGroup kViewStreams{"The views", {kViewPoints}};
inline const StreamGroup kHistoryStreams{"The entries of the history", {kGlobalInformation}};

/// Raises OutOfBounds if the uncompressed bytes of the group exceed `limit`, which is
/// QovJbf::GetLoadLimit().
inline void CheckLoadLimit(const StreamGroup& group, std::uint64_t numBytes, std::uint64_t limit,
                           unsigned long line = __builtin_LINE()) {
  if (numBytes <= limit) return;
  Qov::Util::Raise("include/Qov/Ryx/Tree", Qov::Util::Exception::ErrorType::OutOfBounds,
                   QovJbf::DescribeLoadLimit(group.mContent, numBytes, limit), line);
}

}  // namespace QovRyx
