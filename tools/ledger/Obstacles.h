#pragma once

#include <string>
#include <vector>

#include "InputFile.h"
#include "MergeRequest.h"

namespace Qov::Tools {

/// A reason for which a merge would fail. Texts are not escaped.
struct Obstacle {
  std::string mPath;  ///< The file that it concerns, or empty.
  std::string mText;
  std::string mSubject;  ///< The name of a node, or empty.
};

/// Finds files that would make a merge fail: inputs that cannot be read, an output that is an input
/// or cannot be written, and the temporary copy of an earlier run.
std::vector<Obstacle> FindFileObstacles(const MergeRequest& request,
                                        const std::vector<InputFile>& inputs);

}  // namespace Qov::Tools
