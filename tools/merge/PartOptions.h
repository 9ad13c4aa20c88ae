#pragma once

#include <string>

#include "Qov/Ryx/Merge.h"

namespace CLI {
class App;
}

namespace Qov::Tools {

/// The options of `ryx merge` for merges in parts (--part-of, --stems, --join-parts).
class PartOptions {
 public:
  /// Declares the options. They are stored in `request`, which must exist as long as the parser.
  void Declare(CLI::App& app, QovRyx::MergeRequest& request);
  /// Reads the stems. Raises the errors of ReadInputList.
  void ReadStems(QovRyx::MergeRequest& request, char separator) const;

 private:
  std::string mStemList;
};

/// Returns true if the merge makes a part or joins parts.
inline bool IsInParts(const QovRyx::MergeRequest& request) {
  return request.mJoinParts || !request.mPartOf.empty();
}

}  // namespace Qov::Tools
