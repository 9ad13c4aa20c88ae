#include "PartOptions.h"

#include <CLI/App.hpp>

#include "InputList.h"

namespace Qov::Tools {

void PartOptions::Declare(CLI::App& app, QovRyx::MergeRequest& request) {
  app.add_option("--part-of", request.mPartOf,
                 "Make a part of the merge whose first model is FIRST")
      ->type_name("FIRST");
  app.add_option("--stems", mStemList, "With --names stem: read the parts of names from FILE")
      ->type_name("FILE");
  app.add_flag("--join-parts", request.mJoinParts, "Put parts together");
}

void PartOptions::ReadStems(QovRyx::MergeRequest& request, char separator) const {
  if (!mStemList.empty()) request.mStems = ReadInputList(mStemList, separator);
}

}  // namespace Qov::Tools
