#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Qov/Ryx/Merge.h"

namespace QovRyx {

/// The mode and the names of a merge, with the reason.
struct MergeChoice {
  MergeMode mMode = MergeMode::Datasets;   ///< Not Automatic.
  MergedNames mNames = MergedNames::Keep;  ///< Not Automatic.
  std::string mReason;                     ///< One sentence.
};

/// Called before a model is read, with its position in `models`.
using BeforeModel = std::function<void(std::size_t)>;

/// Chooses the mode and the names that the request leaves open. Reads the descriptors of the models
/// for that, up to the one that decides; reads nothing if the request leaves nothing open.
MergeChoice ChooseMerge(const MergeRequest& request, const std::vector<std::string>& models,
                        const BeforeModel& before);

}  // namespace QovRyx
