#include "CheckOptions.h"

#include <CLI/App.hpp>

#include "ledger/MergeRequest.h"

namespace Qov::Tools {

void CheckOptions::Declare(CLI::App& app) {
  DeclareMergeOptions(app, mOfRyxMerge);
  mOfMerge.Declare(app, mRequest);
  app.add_flag("--strict", mStrict, "Exit with 1 if there are warnings");
  app.add_flag("--details", mDetails, "Show equal inputs and equal warnings one by one");
  app.add_flag("--json", mJson, "Print one JSON document");
}

}  // namespace Qov::Tools
