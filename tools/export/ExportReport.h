#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Json.h"
#include "Output.h"
#include "export/ExportContent.h"
#include "export/ExportFormat.h"

namespace Qov::Tools {

/// The outcome of an export.
struct ExportReport {
  const QovRyx::Tree& mTree;
  const ExportContent& mContent;
  ExportFormat mFormat = ExportFormat::Vtu;
  std::string mPath;
  bool mIsWritten = false;  ///< False if the export was only tried.
  std::uint64_t mNumFiles = 0;
  std::uint64_t mNumBytes = 0;
  ResultCounts mResultsLeftOut{};   ///< Results that the format does not hold.
  std::vector<std::string> mNotes;  ///< Those of the content and of the writer, each once.
};

/// Prints a few lines: what was written, cells by kind, results by placement, and the number of
/// things that were left out.
void PrintSummary(const ExportReport& report, Output& output);

/// Prints everything: meshes, results, node sets, steps, notes and what is left out.
void PrintDetails(const ExportReport& report, Output& output);

/// Returns the document of docs/json/export.md.
Json ExportJson(const ExportReport& report);

}  // namespace Qov::Tools
