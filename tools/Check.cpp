#include <fmt/format.h>

#include <CLI/App.hpp>
#include <exception>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "Command.h"
#include "ErrorText.h"
#include "Json.h"
#include "OptionValues.h"
#include "Plural.h"
#include "check/FileCheck.h"

namespace Qov::Tools {
namespace {

constexpr std::size_t kDefaultLimit = 10;

constexpr const char* kFooter =
    "Checks the container, the tree, and every array, node set and record. Shows the place of\n"
    "each finding; bytes of a stream are counted uncompressed.\n"
    "Exit status: 0 sound (warnings are possible), 1 errors, 2 a file is not a container or "
    "cannot\n"
    "be read.\n"
    "\n"
    "Example: ryx check out.ryx";

class CheckCommand : public Command {
 public:
  const char* GetName() const override { return "check"; }
  const char* GetSummary() const override { return "Find errors in files, and their places"; }
  const char* GetFooter() const override { return kFooter; }
  void Declare(CLI::App& app) override {
    app.add_option("FILE", mPaths, "Model or view-point files")->required();
    app.add_flag("--json", mJson, "Print one JSON document");
    app.add_option("--limit", mLimit, "Findings to show per kind and file, 0 for all")
        ->default_val(kDefaultLimit)
        ->transform(WholeNumber())
        ->type_name("N");
  }
  int Run(Output& output, Output& errors) override;

 private:
  std::vector<std::string> mPaths;
  bool mJson = false;
  std::size_t mLimit = kDefaultLimit;
};

const char* SeverityText(Severity severity) {
  return severity == Severity::Error ? "error" : "warning";
}

/// Returns "sound", or "2 errors, 1 warning".
std::string SummaryText(const Findings& findings) {
  std::string text =
      findings.GetNumErrors() == 0 ? "sound" : Plural(findings.GetNumErrors(), "error");
  if (findings.GetNumWarnings() != 0) text += ", " + Plural(findings.GetNumWarnings(), "warning");
  return text;
}

std::string FindingText(const Finding& finding) {
  const std::string place = finding.mPlace.GetText();
  return fmt::format("{} [{}] {}{}{}", SeverityText(finding.mSeverity), finding.mCode, place,
                     place.empty() ? "" : ": ", finding.mText);
}

void PrintReport(const std::string& path, const FileReport& report, Output& output) {
  const TextStyle& style = output.GetStyle();
  output.Line(fmt::format("{}: {}", Escape(path, style), SummaryText(report.mFindings)));
  for (const Finding& finding : report.mFindings.GetKept()) {
    output.Line("  " + Escape(FindingText(finding), style));
  }
  for (const auto& [code, count] : report.mFindings.GetOmitted()) {
    output.Line(fmt::format("  and {} more [{}]", count, code));
  }
  output.Flush();
}

Json MakeJson(const Place::Named& named, const char* number) {
  return {{number, named.mNumber}, {"name", JsonText(named.mName)}};
}

Json MakeJson(const Finding& finding) {
  Json json = {{"severity", SeverityText(finding.mSeverity)},
               {"code", finding.mCode},
               {"text", JsonText(finding.mText)}};
  const Place& place = finding.mPlace;
  if (!place.mStream.empty()) json["stream"] = JsonText(place.mStream);
  if (place.mBlock) json["block"] = *place.mBlock;
  const bool inStream = !place.mStream.empty() && !place.mBlock;
  if (place.mByte) json[inStream ? "streamByte" : "fileByte"] = *place.mByte;
  if (place.mNode) json["node"] = MakeJson(*place.mNode, "id");
  if (place.mResult) json["result"] = MakeJson(*place.mResult, "position");
  if (!place.mPart.empty()) json["part"] = JsonText(place.mPart);
  return json;
}

const char* KindText(FileReport::Kind kind) {
  switch (kind) {
    case FileReport::Kind::Model:
      return "model";
    case FileReport::Kind::ViewPoints:
      return "view points";
    default:
      return "unknown";
  }
}

Json MakeJson(const std::string& path, const FileReport& report) {
  const Findings& findings = report.mFindings;
  Json json = {{"path", JsonText(path)},
               {"status", findings.GetNumErrors() == 0 ? "sound" : "damaged"},
               {"kind", KindText(report.mKind)},
               {"version", JsonText(report.mVersion)},
               {"errors", findings.GetNumErrors()},
               {"warnings", findings.GetNumWarnings()},
               {"findings", Json::array()},
               {"omitted", Json::object()}};
  for (const Finding& finding : findings.GetKept()) json["findings"].push_back(MakeJson(finding));
  for (const auto& [code, count] : findings.GetOmitted()) json["omitted"][code] = count;
  return json;
}

int CheckCommand::Run(Output& output, Output& errors) {
  int status = kSuccess;
  Json document = MakeJsonDocument(GetName());
  Json& files = document["files"] = Json::array();
  FileChecks checks(mPaths, mLimit == 0 ? SIZE_MAX : mLimit);
  for (const std::string& path : mPaths) {
    std::optional<FileReport> report;
    try {
      report = checks.CheckNext();
    } catch (const std::exception& error) {
      errors.Line(fmt::format("ryx check: {}: {}", Escape(path, errors.GetStyle()),
                              DescribeError(error, errors.GetStyle())));
      files.push_back({{"path", JsonText(path)},
                       {"status", "unreadable"},
                       {"trouble", DescribeError(error, {})}});
      status = kTrouble;
      continue;
    }
    if (report->mFindings.GetNumErrors() != 0) status = std::max(status, kFindings);
    if (mJson) {
      files.push_back(MakeJson(path, *report));
    } else {
      PrintReport(path, *report, output);
    }
  }
  if (mJson) output.Line(FormatJson(document));
  return status;
}

}  // namespace

std::unique_ptr<Command> MakeCheckCommand() { return std::make_unique<CheckCommand>(); }

}  // namespace Qov::Tools
