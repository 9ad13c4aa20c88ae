#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ExpectedModel.h"

namespace Qov::Tools {

/// The estimated size of the output of a merge, in bytes.
struct SizeEstimate {
  std::uint64_t mValues = 0;  ///< Arrays and node sets, before compression.
  std::uint64_t mFile = 0;    ///< The file, if data compress as well as in the inputs.
  /// Space that the merge needs, with the temporary copy of a run with view points.
  std::uint64_t mNeeded = 0;
  std::optional<std::uint64_t> mFree;  ///< Free space; includes that of an older output.

  bool Fits() const { return !mFree || mNeeded <= *mFree; }
};

/// Estimates the size of the output. Uses descriptors and the index of each input and reads no
/// values.
SizeEstimate EstimateSize(const MergeRequest& request, const std::vector<InputFile>& inputs,
                          const ExpectedModel& model, const Ledger& ledger);

}  // namespace Qov::Tools
