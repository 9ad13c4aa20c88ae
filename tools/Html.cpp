#include <fmt/format.h>

#include <CLI/App.hpp>
#include <algorithm>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Command.h"
#include "ErrorText.h"
#include "OptionValues.h"
#include "Plural.h"
#include "Qov/Util/Raise.h"
#include "SafeOutput.h"
#include "ValueText.h"
#include "diagnostics/Printable.h"
#include "export/ContentOptions.h"
#include "export/ExportContent.h"
#include "html/PageDiff.h"
#include "html/PageTables.h"
#include "html/PageWriter.h"
#include "picture/ResultScalars.h"

namespace Qov::Tools {
namespace {

using ErrorType = Util::Exception::ErrorType;

constexpr const char* kSource = "tools/Html";
constexpr std::uint64_t kUsualLimit = 50'000'000;
constexpr const char* kFooter =
    "Writes one file that a browser shows without a network: the outer surface of the geometries,\n"
    "coloured by results, and tables of attributes, history and statistics.\n"
    "--diff shows the results of model B minus those of model A, on the mesh of A.\n"
    "Patterns have *, ? and [...]. Nodes can be given by their ids, steps by their numbers.\n"
    "Coordinates and results have 16 bits; results also have their exact values if these take at\n"
    "most 1 MiB, compressed. SIZE is in bytes or has a unit, such as 500kB or 2MiB. A "
    "page\n"
    "that would be larger lacks exact values, then the last results, then geometries that do not "
    "fit.\n"
    "\n"
    "Exit status: 0 all that was chosen is in the page, 1 some of it is not, 2 failure.\n"
    "\n"
    "Example: ryx html plate.ryx -o plate.html\n"
    "         ryx html assembly.ryx -o panels.html --nodes 'Panel*' --result Contact";

class HtmlCommand : public Command {
 public:
  const char* GetName() const override { return "html"; }
  const char* GetSummary() const override { return "Write a model as a page for a browser"; }
  const char* GetFooter() const override { return kFooter; }
  void Declare(CLI::App& app) override;
  int Run(Output& output, Output& errors) override;

 private:
  int Write(Output& output, Output& errors);
  void CheckOptions() const;
  int WriteModel(const QovRyx::Tree& tree, ExportContent& content, const PageDiff* diff,
                 Output& output, Output& errors);
  Json MakeDocument(const PageReport& report, const ExportContent& content,
                    std::uint64_t size) const;
  void Print(const PageReport& report, std::uint64_t size, Output& output) const;

  std::string mModel;
  std::vector<std::string> mDiff;
  std::string mOutputPath;
  ContentOptions mContent;
  PageRequest mPage;
  std::string mComponent = "magnitude";
  bool mDryRun = false;
  bool mOverwrite = false;
  bool mJson = false;
};

void HtmlCommand::Declare(CLI::App& app) {
  mPage.mLimit = kUsualLimit;
  CLI::Option* model = app.add_option("MODEL", mModel, "Model file");
  app.add_option("--diff", mDiff, "Show the results of B minus those of A, which have one mesh")
      ->type_name("A B")
      ->expected(2)
      ->excludes(model);
  app.add_option("-o,--output", mOutputPath, "Page to write")->type_name("OUT.html")->required();
  mContent.DeclareChoice(app);
  mContent.DeclareCells(app);
  app.add_option("--result", mPage.mResult, "Result that is shown first")->type_name("NAME");
  app.add_option("--component", mComponent, "Its component: x, y, z, magnitude or a number")
      ->type_name("WHICH");
  app.add_option("--step", mPage.mStep, "Step or load case that is shown first")->type_name("STEP");
  app.add_option("--limit", mPage.mLimit, "Greatest size of the page; default 50 MB")
      ->transform(SizeValue())
      ->option_text("SIZE");
  app.add_flag("--dry-run", mDryRun, "Write nothing, and show what would be written and what not");
  app.add_flag("--overwrite", mOverwrite, "Replace an existing page");
  app.add_flag("--json", mJson, "Print one JSON document");
}

void HtmlCommand::CheckOptions() const {
  if (mModel.empty() && mDiff.empty()) {
    Util::Raise(kSource, ErrorType::InvalidMethod, "give a MODEL, or two with --diff");
  }
  std::vector<std::string> inputs = mDiff;
  inputs.push_back(mModel);
  for (const std::string& input : inputs) {
    std::error_code error;
    if (!std::filesystem::equivalent(mOutputPath, input, error)) continue;
    Util::Raise(kSource, ErrorType::MiscellaneousError,
                Util::Quote(mOutputPath) + " is the model itself; choose another output");
  }
}

Json HtmlCommand::MakeDocument(const PageReport& report, const ExportContent& content,
                               std::uint64_t size) const {
  Json document = MakeJsonDocument(GetName());
  document["path"] = JsonText(mOutputPath);
  document["written"] = !mDryRun;
  document["complete"] = report.mIsComplete;
  document["bytes"] = size;
  document["limit"] = mPage.mLimit;
  document["geometries"] = Json::array();
  for (const PagePartCounts& part : report.mParts) {
    document["geometries"].push_back({{"id", part.mId},
                                      {"name", JsonText(part.mName)},
                                      {"written", part.mIsWritten},
                                      {"points", part.mNumPoints},
                                      {"triangles", part.mNumTriangles},
                                      {"lines", part.mNumLines}});
  }
  document["results"] = Json::array();
  for (const PageResultCounts& result : report.mResults) {
    document["results"].push_back({{"name", JsonText(result.mName)},
                                   {"arrays", result.mNumArrays},
                                   {"arraysLeftOut", result.mNumLeftOut},
                                   {"arraysExact", result.mNumExact}});
  }
  document["differences"] = Json::array();
  for (const PageDifference& difference : report.mDifferences) {
    document["differences"].push_back(
        {{"result", JsonText(difference.mResult)},
         {"step", difference.mStep.empty() ? Json() : Json(JsonText(difference.mStep))},
         {"node", difference.mNode},
         {"nodeName", JsonText(difference.mNodeName)},
         {"item", NameOf(difference.mItem.mKind)},
         {"number", difference.mItem.mNumber},
         {"value", JsonFloat(difference.mValue)}});
  }
  document["notes"] = report.mNotes;
  document["left_out"] = content.mOmissions;
  return document;
}

/// Prints the greatest difference of each result.
void PrintDifferences(const PageReport& report, Output& output) {
  const TextStyle& style = output.GetStyle();
  const std::string* previous = nullptr;
  for (const PageDifference& difference : report.mDifferences) {
    if (previous != nullptr && *previous == difference.mResult) continue;
    previous = &difference.mResult;
    output.Line(fmt::format(
        "Greatest difference of {}: {} at {} of {}{}", Escape(difference.mResult, style),
        difference.mValue, ItemText(difference.mItem), Escape(difference.mNodeName, style),
        difference.mStep.empty() ? "" : ", step " + Escape(difference.mStep, style)));
  }
}

void HtmlCommand::Print(const PageReport& report, std::uint64_t size, Output& output) const {
  std::uint64_t numTriangles = 0;
  for (const PagePartCounts& part : report.mParts) numTriangles += part.mNumTriangles;
  const auto& parts = report.mParts;
  const auto numParts = static_cast<std::uint64_t>(std::count_if(
      parts.begin(), parts.end(), [](const PagePartCounts& part) { return part.mIsWritten; }));
  const auto& results = report.mResults;
  const auto numResults = static_cast<std::uint64_t>(std::count_if(
      results.begin(), results.end(),
      [](const PageResultCounts& result) { return result.mNumLeftOut < result.mNumArrays; }));
  output.Line(fmt::format("{} {}: {}, {}, {}, {}", mDryRun ? "Would write" : "Wrote",
                          Escape(mOutputPath, output.GetStyle()), SizeText(size),
                          numParts == 1 ? "1 geometry" : fmt::format("{} geometries", numParts),
                          Plural(numTriangles, "triangle"), Plural(numResults, "result")));
  PrintDifferences(report, output);
}

int HtmlCommand::Run(Output& output, Output& errors) {
  try {
    return Write(output, errors);
  } catch (const std::exception& error) {
    errors.Line("ryx html: " + DescribeError(error, errors.GetStyle()));
    return kTrouble;
  }
}

/// Returns the name of a file without its folder.
std::string FileName(const std::string& path) {
  return std::filesystem::path(path).filename().string();
}

int HtmlCommand::Write(Output& output, Output& errors) {
  mContent.Finish();
  mContent.mRequest.mVerb = "shown";
  mPage.mComponent = ParseComponent(mComponent);
  CheckOptions();
  const ExportRequest& request = mContent.mRequest;
  const std::string& path = mDiff.empty() ? mModel : mDiff[0];
  QovRyx::Tree tree(false);
  if (!LoadForExport(GetName(), path, tree, errors)) return kTrouble;
  ExportContent content = ChooseContent(tree, request, StepLayout::Meshes);
  if (mDiff.empty()) {
    mPage.mTitle = FileName(mModel);
    return WriteModel(tree, content, nullptr, output, errors);
  }
  QovRyx::Tree other(false);
  if (!LoadForExport(GetName(), mDiff[1], other, errors)) return kTrouble;
  const ExportContent otherContent = ChooseContent(other, request, StepLayout::Meshes);
  PageDiff diff{FileName(mDiff[0]), FileName(mDiff[1]), {}};
  mPage.mTitle = diff.mNameB + " minus " + diff.mNameA;
  PairResults(content, otherContent, request.mKinds, diff);
  for (const std::string& note : otherContent.mNotes) {
    content.mNotes.push_back(Escape(diff.mNameB, {}) + ": " + note);
  }
  content.mIsComplete = content.mIsComplete && otherContent.mIsComplete;
  return WriteModel(tree, content, &diff, output, errors);
}

int HtmlCommand::WriteModel(const QovRyx::Tree& tree, ExportContent& content, const PageDiff* diff,
                            Output& output, Output& errors) {
  PageReport report;
  report.mNotes = content.mNotes;
  report.mIsComplete = content.mIsComplete;
  Json tables = Json::array();  // with --diff they would be those of A
  if (diff == nullptr) tables = MakeTables(tree, mContent.mRequest.mResults, report.mNotes);
  QovJbf::RemoveOutputsOnSignals();
  OutputSet outputs(mOverwrite, mDryRun);
  WritePage(tree, content, tables, mContent.mRequest.mKinds, mPage, diff, outputs.Open(mOutputPath),
            report);
  outputs.CommitAll();
  RemoveRepeated(report.mNotes);
  if (mJson) {
    output.Line(FormatJson(MakeDocument(report, content, outputs.GetNumBytes())));
  } else {
    PrintNotes(GetName(), report.mNotes, "json", errors);
    Print(report, outputs.GetNumBytes(), output);
  }
  return report.mIsComplete ? kSuccess : kIncomplete;
}

}  // namespace

std::unique_ptr<Command> MakeHtmlCommand() { return std::make_unique<HtmlCommand>(); }

}  // namespace Qov::Tools
