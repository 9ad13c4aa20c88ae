#include "export/ExportReport.h"

#include <fmt/format.h>

#include <map>
#include <nlohmann/json.hpp>
#include <utility>

#include "Plural.h"
#include "TextTable.h"
#include "ValueText.h"
#include "export/ExportSets.h"

namespace Qov::Tools {
namespace {

constexpr std::size_t kWidthLimit = 60;  // largest width of a column

const char* PlacementText(QovMesh::Placement placement) {
  switch (placement) {
    case QovMesh::Placement::Point:
      return "point";
    case QovMesh::Placement::Cell:
      return "cell";
    case QovMesh::Placement::Field:
      break;
  }
  return "field";
}

const char* TypeText(const ExportResult& result) { return result.mIsUnsigned ? "u32" : "f32"; }

std::string StepText(const ExportContent& content, const ExportResult& result,
                     const TextStyle& style) {
  return result.mStep ? Escape(content.mSteps[*result.mStep].mName, style) : "all";
}

std::string CellsText(const ExportContent& content) {
  std::map<QovMesh::CellKind, std::uint64_t> counts;
  for (const ExportPart& part : content.mParts) {
    for (const auto& decision : part.mDecisions) counts[decision.mKind] += decision.mNumCells;
  }
  std::string text;
  for (const auto& [kind, count] : counts) {
    text += fmt::format("{}{} {}", text.empty() ? "" : ", ", count, QovMesh::GetShape(kind).mName);
  }
  return text.empty() ? "none" : text;
}

/// Counts the results that are written.
std::string ResultsText(const ExportReport& report) {
  ResultCounts counts{};
  for (const ExportPart& part : report.mContent.mParts) {
    for (const auto& result : part.mResults) ++counts[static_cast<std::size_t>(result.mPlacement)];
  }
  for (std::size_t i = 0; i < counts.size(); ++i) counts[i] -= report.mResultsLeftOut[i];
  return fmt::format("{} as point data, {} as cell data, {} as field data", counts[0], counts[1],
                     counts[2]);
}

void PrintResults(const ExportContent& content, const ExportPart& part, Output& output) {
  if (part.mResults.empty()) return;
  TextTable table({{"RESULT"}, {"DATA"}, {"TYPE"}, {"WIDTH", TextTable::Align::Right}, {"STEP"}},
                  kWidthLimit);
  const TextStyle& style = output.GetStyle();
  for (const ExportResult& result : part.mResults) {
    table.AddRow({Escape(result.mName, style), PlacementText(result.mPlacement), TypeText(result),
                  fmt::format("{}", result.mWidth), StepText(content, result, style)});
  }
  for (const std::string& line : table.GetLines()) output.Line("  " + line);
}

void PrintSets(ExportSets& sets, const ExportPart& part, Output& output) {
  for (const ExportSet& set : sets.Load(part)) {
    output.Line(fmt::format("  set {}: {}, {}", Escape(set.mName, output.GetStyle()),
                            Plural(set.mNumbers.size(), "number"),
                            set.mIsMask ? "all of them node ids" : "not all of them node ids"));
  }
}

void PrintSteps(const ExportContent& content, Output& output) {
  if (content.mSteps.empty()) return;
  TextTable table({{"STEP"}, {"TIME", TextTable::Align::Right}, {"SOURCE OF THE TIME"}},
                  kWidthLimit);
  for (const QovMesh::Step& step : content.mSteps) {
    table.AddRow({Escape(step.mName, output.GetStyle()),
                  step.mTime ? fmt::format("{}", *step.mTime) : "-", step.mSource});
  }
  for (const std::string& line : table.GetLines()) output.Line(line);
}

std::uint64_t CountCells(const ExportPart& part) {
  std::uint64_t count = 0;
  for (const auto& decision : part.mDecisions) count += decision.mNumCells;
  return count;
}

Json CellsJson(const ExportPart& part) {
  Json list = Json::array();
  for (const auto& decision : part.mDecisions) {
    list.push_back({{"nodes", decision.mNumNodes},
                    {"count", decision.mNumCells},
                    {"kind", QovMesh::GetShape(decision.mKind).mName},
                    {"reason", decision.mReason},
                    {"warning", decision.mWarning}});
  }
  return list;
}

Json ResultsJson(const ExportContent& content, const ExportPart& part) {
  Json list = Json::array();
  for (const ExportResult& result : part.mResults) {
    Json entry = {{"name", JsonText(result.mName)},
                  {"source", JsonText(result.mpVariable->mName)},
                  {"placement", PlacementText(result.mPlacement)},
                  {"type", TypeText(result)},
                  {"width", result.mWidth},
                  {"step", nullptr}};
    if (result.mStep) entry["step"] = JsonText(content.mSteps[*result.mStep].mName);
    list.push_back(std::move(entry));
  }
  return list;
}

Json SetsJson(ExportSets& sets, const ExportPart& part) {
  Json list = Json::array();
  for (const ExportSet& set : sets.Load(part)) {
    list.push_back(
        {{"name", JsonText(set.mName)}, {"numbers", set.mNumbers.size()}, {"mask", set.mIsMask}});
  }
  return list;
}

}  // namespace

void PrintSummary(const ExportReport& report, Output& output) {
  output.Line(fmt::format("{} {}: {}, {}, {}", report.mIsWritten ? "Wrote" : "Would write",
                          Escape(report.mPath, output.GetStyle()), Plural(report.mNumFiles, "file"),
                          SizeText(report.mNumBytes),
                          report.mContent.mParts.size() == 1
                              ? "1 geometry"
                              : fmt::format("{} geometries", report.mContent.mParts.size())));
  output.Line("Cells: " + CellsText(report.mContent));
  output.Line("Results: " + ResultsText(report));
}

void PrintDetails(const ExportReport& report, Output& output) {
  const ExportContent& content = report.mContent;
  ExportSets sets(report.mTree, content);
  for (const ExportPart& part : content.mParts) {
    output.Line(fmt::format("{} [Geometry {}]: {}, {}", Escape(part.mName, output.GetStyle()),
                            part.mId, Plural(part.mNumPoints, "point"),
                            Plural(CountCells(part), "cell")));
    for (const auto& decision : part.mDecisions) output.Line("  " + DescribeDecision(decision));
    PrintResults(content, part, output);
    PrintSets(sets, part, output);
  }
  PrintSteps(content, output);
  for (const std::string& note : report.mNotes) output.Line("Note: " + note);
  for (const std::string& omission : content.mOmissions) output.Line("Left out: " + omission);
  PrintSummary(report, output);
}

Json ExportJson(const ExportReport& report) {
  const ExportContent& content = report.mContent;
  Json document = MakeJsonDocument("export");
  document["path"] = JsonText(report.mPath);
  document["format"] = GetEnding(report.mFormat).substr(1);
  document["written"] = report.mIsWritten;
  document["complete"] = content.mIsComplete;
  document["files"] = report.mNumFiles;
  document["bytes"] = report.mNumBytes;
  ExportSets sets(report.mTree, content);
  Json parts = Json::array();
  for (const ExportPart& part : content.mParts) {
    Json groups = Json::array();
    for (const std::string& group : part.mGroups) groups.push_back(JsonText(group));
    parts.push_back({{"id", part.mId},
                     {"name", JsonText(part.mName)},
                     {"groups", std::move(groups)},
                     {"points", part.mNumPoints},
                     {"cells", CellsJson(part)},
                     {"results", ResultsJson(content, part)},
                     {"sets", SetsJson(sets, part)}});
  }
  document["geometries"] = std::move(parts);
  Json steps = Json::array();
  for (const QovMesh::Step& step : content.mSteps) {
    Json entry = {{"name", JsonText(step.mName)}, {"time", nullptr}, {"source", step.mSource}};
    if (step.mTime) entry["time"] = JsonNumber(*step.mTime);
    steps.push_back(std::move(entry));
  }
  document["steps"] = std::move(steps);
  document["notes"] = report.mNotes;
  document["left_out"] = content.mOmissions;
  return document;
}

}  // namespace Qov::Tools
