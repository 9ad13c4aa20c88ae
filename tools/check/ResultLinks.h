#pragma once

#include "check/ModelContent.h"
#include "model/LinkFollower.h"

namespace Qov::Tools {

/// Follows the links of a model's results to the results that have the values.
class ResultLinks {
 public:
  explicit ResultLinks(const ModelContent& model);

  /// Returns the result whose values `variable` has: itself if it is not linked. Returns null if
  /// it has no values, or if they could not be found because a part of the file is unreadable.
  const StoredVariable* FindOwner(const StoredVariable& variable) {
    return mFollower.FindOwner(variable);
  }

  /// Reports results whose links are dangling or form cycles.
  void Check(Findings& findings);

 private:
  const StoredVariable* FindTarget(const StoredVariable& variable) const;
  bool IsTargetReadable(const StoredVariable& variable) const;

  const ModelContent& mModel;
  QovRyx::LinkFollower<StoredVariable> mFollower;
};

}  // namespace Qov::Tools
