#pragma once

#include <string>
#include <utility>
#include <vector>

#include "SafeOutput.h"
#include "ledger/Ledger.h"

namespace Qov::Tools {

/// A picture of a geometry in a report.
struct ReportPicture {
  std::string mName;
  std::string mPng;          ///< The bytes of the file.
  std::string mDescription;  ///< For readers who do not see it.
};

/// The content of a page about a merge.
struct MergeReport {
  enum class Kind { Ok, Warning, Error };

  std::string mPath;     ///< The output of the merge.
  std::string mVerdict;  ///< One sentence.
  bool mIsOk = false;
  std::vector<std::pair<Kind, std::string>> mLines;  ///< Escaped.
  std::vector<ReportPicture> mPictures;
  std::vector<std::string> mNotes;  ///< Escaped.
};

/// Writes a page with the verdict, the ledger as tables, its counts and the pictures. Raises
/// WriteError.
void WriteReportPage(const MergeReport& report, const Ledger& ledger, SafeOutput& output);

}  // namespace Qov::Tools
