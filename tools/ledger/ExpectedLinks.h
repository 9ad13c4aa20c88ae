#pragma once

#include "ExpectedModel.h"
#include "model/LinkFollower.h"

namespace Qov::Tools {

/// Returns a follower of the links of an expected model, which must exist as long.
inline QovRyx::LinkFollower<ExpectedResult> FollowLinks(const ExpectedModel& model) {
  return QovRyx::LinkFollower<ExpectedResult>(
      [&model](const ExpectedResult& result) { return model.FindTarget(result); });
}

}  // namespace Qov::Tools
