#pragma once

#include "MergeRequestOptions.h"
#include "Qov/Ryx/Merge.h"
#include "app/MergeOptions.h"
#include "ledger/InputGroups.h"

namespace CLI {
class App;
}

namespace Qov::Tools {

/// The options that `ryx plan` and `ryx verify` have in common: those of both merge programs, and
/// those of the report.
struct CheckOptions {
  /// Declares the options. This object must exist as long as the parser.
  void Declare(CLI::App& app);

  bool IsOfMerge() const { return !mOfMerge.FindGiven().empty(); }
  LedgerDetail GetDetail() const { return mDetails ? LedgerDetail::Full : LedgerDetail::Summary; }

  MergeOptions mOfRyxMerge;
  MergeRequestOptions mOfMerge;
  QovRyx::MergeRequest mRequest;
  bool mStrict = false;
  bool mDetails = false;
  bool mJson = false;
};

}  // namespace Qov::Tools
