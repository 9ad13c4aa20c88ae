#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ExpectedModel.h"

namespace Qov::Tools {

/// How big the output of a merge will be.
struct SizeEstimate {
  std::uint64_t mValues = 0;  ///< Bytes of arrays and node sets, before compression.
  std::uint64_t mFile = 0;    ///< Bytes of the file, if all compresses as well as in the inputs.
  /// Bytes that the disk will have to hold, the copy that a run with view points leaves included.
  std::uint64_t mNeeded = 0;
  std::optional<std::uint64_t> mFree;  ///< Bytes that it has; those of an older output are.

  bool Fits() const { return !mFree || mNeeded <= *mFree; }
};

/// Reads no values: arrays have known sizes, and what they take in a file is told by its index.
SizeEstimate EstimateSize(const MergeRequest& request, const std::vector<InputFile>& inputs,
                          const ExpectedModel& model, const Ledger& ledger);

}  // namespace Qov::Tools
