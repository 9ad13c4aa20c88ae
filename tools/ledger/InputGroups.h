#pragma once

#include <cstddef>
#include <vector>

#include "Ledger.h"

namespace Qov::Tools {

/// The amount of a ledger that is printed.
enum class LedgerDetail {
  Summary,  ///< Inputs that are treated alike are printed once.
  Full,
};

/// Consecutive inputs with the same ledger.
struct InputGroup {
  std::size_t mFirst = 0;  ///< Position among the inputs.
  std::size_t mCount = 1;
  /// The first input with this ledger; mFirst if there is no earlier one.
  std::size_t mLike = 0;

  bool IsNew() const { return mLike == mFirst; }
};

/// Groups the inputs of a ledger. Two models have the same ledger if all their counts are equal and
/// the same results are renamed and shared, whatever their instance parts are. View-point files are
/// not grouped.
std::vector<InputGroup> GroupInputs(const std::vector<InputLedger>& inputs, LedgerDetail detail);

/// Returns the number of each input among the models, from 1, and 0 for view-point files.
std::vector<std::size_t> NumberModels(const std::vector<InputLedger>& inputs);

}  // namespace Qov::Tools
