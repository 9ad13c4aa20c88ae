#include "MergeText.h"

#include <fmt/format.h>

#include <string>
#include <vector>

#include "ErrorText.h"
#include "Plural.h"
#include "Terminal.h"
#include "ValueText.h"

namespace Qov::Tools {
namespace {

/// Returns the instance parts that the models got: all of a few, and the ends of many.
std::string PartsText(const std::vector<std::string>& parts, const TextStyle& style) {
  constexpr std::size_t kMost = 4;
  std::string text;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const bool isHidden = parts.size() > kMost && i >= 2 && i + 1 < parts.size();
    if (isHidden && i > 2) continue;
    text += (i == 0 ? "" : ", ") + (isHidden ? "..." : Escape(parts[i], style));
  }
  return text;
}

std::string NamesText(const QovRyx::MergeReport& report, const TextStyle& style) {
  switch (report.mNames) {
    case QovRyx::MergedNames::Stem:
      return "named after their files: " + PartsText(report.mInstanceNames, style);
    case QovRyx::MergedNames::Number:
      return "named by number: " + PartsText(report.mInstanceNames, style);
    default:
      return "which keep their names";
  }
}

void PrintLeftOut(const QovRyx::MergeReport& report, Output& output) {
  if (report.mNodesLeftOut + report.mResultsLeftOut != 0) {
    output.Line(fmt::format("The selection leaves out {} and {}",
                            Plural(report.mNodesLeftOut, "node"),
                            Plural(report.mResultsLeftOut, "result")));
  }
  if (report.mLinksReplaced != 0) {
    output.Line(Plural(report.mLinksReplaced, "linked result", "take") +
                " the values along, because the result of the link is left out");
  }
  if (report.mViewsLeftOut != 0) {
    output.Line(Plural(report.mViewsLeftOut, "view") + " left out");
  }
}

}  // namespace

const char* NameOf(QovRyx::MergeMode mode) {
  switch (mode) {
    case QovRyx::MergeMode::Automatic:
      break;
    case QovRyx::MergeMode::Instances:
      return "instances";
    case QovRyx::MergeMode::Datasets:
      return "datasets";
  }
  return "auto";
}

const char* NameOf(QovRyx::MergedNames names) {
  switch (names) {
    case QovRyx::MergedNames::Automatic:
      break;
    case QovRyx::MergedNames::Keep:
      return "keep";
    case QovRyx::MergedNames::Stem:
      return "stem";
    case QovRyx::MergedNames::Number:
      return "number";
  }
  return "auto";
}

const char* NameOf(QovRyx::MergedViews views) {
  switch (views) {
    case QovRyx::MergedViews::First:
      return "first";
    case QovRyx::MergedViews::All:
      return "all";
    case QovRyx::MergedViews::None:
      break;
  }
  return "none";
}

bool HasLeftOut(const QovRyx::MergeReport& report) {
  return report.mNodesLeftOut + report.mResultsLeftOut + report.mViewsLeftOut != 0;
}

void PrintMerge(const QovRyx::MergeRequest& request, const QovRyx::MergeReport& report,
                Output& output) {
  const TextStyle& style = output.GetStyle();
  std::string mode = std::string("Merged as ") + NameOf(report.mMode);
  if (report.mMode == QovRyx::MergeMode::Instances) mode += ", " + NamesText(report, style);
  output.Line(mode);
  output.Line("Reason: " + Escape(RestoreNames(report.mReason), style));
  const QovRyx::SharedArrays& shared = report.mShared;
  const std::uint64_t numShared = shared.mLinked + shared.mSharedBytes;
  if (numShared != 0) {
    output.Line(fmt::format("Stored once: {} in {} ({} linked to the first one, {} with its bytes)",
                            SizeText(shared.mSavedBytes), Plural(numShared, "equal array"),
                            shared.mLinked, shared.mSharedBytes));
  }
  if (shared.mNotCompared != 0) {
    output.Line(Plural(shared.mNotCompared, "array") +
                " not compared, because their order would make that too slow");
  }
  PrintLeftOut(report, output);
  for (const std::string& note : report.mNotes) {
    output.Line("Note: " + Escape(RestoreNames(note), style));
  }
  output.Line(fmt::format("{}: {}, {} geometr{}, {}, {} from {} of inputs",
                          Escape(request.mOutput, style), Plural(report.mNodes, "node"),
                          report.mGeometries, report.mGeometries == 1 ? "y" : "ies",
                          Plural(report.mResults, "result"), SizeText(report.mOutputBytes),
                          SizeText(report.mInputBytes)));
}

}  // namespace Qov::Tools
