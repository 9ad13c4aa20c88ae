#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "ExpectedModel.h"

namespace Qov::Tools {

/// Returns the ledger of a merge. Items of the model that are not marked as faulty count as copied
/// or made. `found` has the numbers of items in the output; without it, the expected numbers count
/// as found.
Ledger MakeLedger(const ExpectedModel& model, const std::vector<InputFile>& inputs,
                  const std::optional<PerItem<std::uint64_t>>& found = std::nullopt);

}  // namespace Qov::Tools
