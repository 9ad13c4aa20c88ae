#include <fmt/format.h>

#include <CLI/App.hpp>
#include <exception>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Command.h"
#include "ErrorText.h"
#include "OptionValues.h"
#include "Qov/Util/FileContext.h"
#include "check/UnreadContent.h"
#include "ledger/LedgerReport.h"
#include "ledger/Recount.h"
#include "ledger/Warnings.h"

namespace Qov::Tools {
namespace {

constexpr int kDiffers = 1;
constexpr std::size_t kUsualLimit = 20;

constexpr const char* kFooter =
    "Give it the options and inputs that RyxMerge was given. Every value of every result in\n"
    "OUTPUT is compared with the input that it comes from, and so are names, links, attributes,\n"
    "materials, node sets, views and the history. Warnings come last, as those of ryx plan.\n"
    "\n"
    "Exit status: 0 all is there, 1 something differs or --strict and there are warnings,\n"
    "2 trouble.\n"
    "\n"
    "Example: ryx verify --merge-as-instances --arrange-files all.ryx run*.ryx";

/// What a recount brought to light.
struct Verdict {
  explicit Verdict(std::size_t limit) : mDifferences(limit) {}

  bool IsGood() const {
    return mTrouble.empty() && mDifferences.GetCount() == 0 && mLedger.AddsUp();
  }

  std::vector<Obstacle> mTrouble;  ///< Why there is no recount.
  Ledger mLedger;
  Differences mDifferences;
  std::vector<Warning> mWarnings;
};

bool HasInputs(const MergeRequest& request, const std::vector<InputFile>& inputs,
               Verdict& verdict) {
  if (request.mMode == MergeMode::Nothing) {
    verdict.mTrouble.push_back({"", "RyxMerge writes no output for these inputs", ""});
  }
  for (const InputFile& input : inputs) {
    if (!input.mError.empty()) verdict.mTrouble.push_back({input.mPath, input.mError, ""});
  }
  return verdict.mTrouble.empty();
}

bool LoadOutput(const std::string& path, QovRyx::Tree& output, Verdict& verdict) {
  try {
    QovRyx::Tree::IdMap ids;
    output.Load(path, ids, QovRyx::Tree::ReadMode::Everything,
                QovRyx::Tree::SupportedFileFormats::Ryx);
  } catch (const std::exception& error) {
    verdict.mTrouble.push_back({path, FileErrorText(path, error), ""});
  }
  return verdict.mTrouble.empty();
}

/// Why an array or a node set of an input cannot be read, and of which one.
Obstacle UnreadableInput(const std::exception& error) {
  const auto* concerned = dynamic_cast<const Util::FileContext*>(&error);
  const std::string path = concerned == nullptr ? "" : concerned->GetFilePath();
  return {path, FileErrorText(path, error), ""};
}

void AddWarnings(const MergeOptions& options, const MergeRequest& request,
                 const std::vector<InputFile>& inputs, ExpectedModel& model, Verdict& verdict) {
  verdict.mWarnings = FindRequestWarnings(options, request);
  const Ledger planned = TakeStock(model, inputs);
  for (Warning& warning : FindContentWarnings(inputs, model, planned)) {
    verdict.mWarnings.push_back(std::move(warning));
  }
}

void Examine(const MergeOptions& options, const MergeRequest& request, Verdict& verdict) {
  const std::vector<InputFile> inputs = LoadInputs(request);
  QovRyx::Tree output(false);
  if (!HasInputs(request, inputs, verdict)) return;
  if (!LoadOutput(request.mOutput, output, verdict)) return;
  std::vector<Obstacle> obstacles;
  ExpectedModel model = ExpectModel(request.mMode, inputs, obstacles);
  for (const Obstacle& obstacle : obstacles) {
    const std::string text = "cannot have been merged: " + obstacle.mText;
    verdict.mDifferences.Add({0, "", obstacle.mSubject, obstacle.mPath, text});
  }
  verdict.mLedger = model.mLedger;
  if (!obstacles.empty()) return;
  AddWarnings(options, request, inputs, model, verdict);
  try {
    Recount recount(model, inputs, output, verdict.mDifferences);
    recount.Run();
    recount.ReportUnread(FindUnreadContent(request.mOutput));
  } catch (const std::exception& error) {
    verdict.mTrouble.push_back(UnreadableInput(error));
    return;
  }
  verdict.mLedger = TakeStock(model, inputs, CountItems(output));
}

std::string DifferenceText(const Difference& difference, const TextStyle& style) {
  std::string text;
  const auto add = [&](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
  if (difference.mNode != 0) {
    add(fmt::format("node {} {}", difference.mNode, Escape(difference.mNodeName, style)));
  }
  if (!difference.mSubject.empty()) add(Escape(difference.mSubject, style));
  if (!difference.mInput.empty()) add("from " + Escape(difference.mInput, style));
  return text + (text.empty() ? "" : ": ") + Escape(difference.mText, style);
}

void PrintVerdict(const MergeRequest& request, const Verdict& verdict, Output& output) {
  const TextStyle& style = output.GetStyle();
  output.Line(
      fmt::format("{}, merged as {}", Escape(request.mOutput, style), NameOf(request.mMode)));
  PrintLedger(verdict.mLedger, request.mOutput, output);
  output.Line();
  if (verdict.IsGood()) {
    output.Line(TellsOfLoss(verdict.mWarnings)
                    ? "OK: all values match. The warnings tell what the merge leaves out."
                    : "OK: nothing is missing and all values match.");
    return;
  }
  const std::uint64_t count = verdict.mDifferences.GetCount();
  output.Line(fmt::format("Not OK: {} difference{}", count, count == 1 ? "" : "s"));
  for (const Difference& difference : verdict.mDifferences.GetFirst()) {
    output.Line("  " + DifferenceText(difference, style));
  }
  const std::uint64_t hidden = count - verdict.mDifferences.GetFirst().size();
  if (hidden != 0) output.Line(fmt::format("  and {} more", hidden));
}

Json DifferencesJson(const Differences& differences) {
  Json first = Json::array();
  for (const Difference& difference : differences.GetFirst()) {
    Json entry = Json::object();
    if (difference.mNode != 0) {
      entry["node"] = difference.mNode;
      entry["name"] = JsonText(difference.mNodeName);
    }
    if (!difference.mSubject.empty()) entry["subject"] = JsonText(difference.mSubject);
    if (!difference.mInput.empty()) entry["input"] = JsonText(difference.mInput);
    entry["text"] = Escape(difference.mText, {});
    first.push_back(std::move(entry));
  }
  return {{"count", differences.GetCount()}, {"first", first}};
}

Json VerdictJson(const MergeRequest& request, const Verdict& verdict) {
  Json document = MakeJsonDocument("verify");
  document["mode"] = NameOf(request.mMode);
  document["path"] = JsonText(request.mOutput);
  document["addsUp"] = verdict.IsGood();
  document["trouble"] = Json::array();
  for (const Obstacle& trouble : verdict.mTrouble) {
    document["trouble"].push_back(
        {{"path", JsonText(trouble.mPath)}, {"text", Escape(trouble.mText, {})}});
  }
  if (!verdict.mTrouble.empty()) return document;
  document["warnings"] = WarningsJson(verdict.mWarnings);
  document["differences"] = DifferencesJson(verdict.mDifferences);
  document["ledger"] = LedgerJson(verdict.mLedger);
  return document;
}

class VerifyCommand : public Command {
 public:
  const char* GetName() const override { return "verify"; }
  const char* GetSummary() const override { return "Recount a merge and compare all its values"; }
  const char* GetFooter() const override { return kFooter; }
  void Declare(CLI::App& app) override {
    DeclareMergeOptions(app, mOptions);
    app.add_flag("--strict", mStrict, "Exit with 1 if there are warnings");
    app.add_flag("--json", mJson, "Print one JSON document");
    app.add_option("--limit", mLimit, "Differences to show")
        ->capture_default_str()
        ->transform(WholeNumber());
    app.add_option("OUTPUT", mOutputPath, "The merged model")->required();
    app.add_option("INPUT", mInputPaths, "The inputs of the merge")->required()->expected(2, -1);
  }
  int Run(Output& output, Output& errors) override;

 private:
  MergeOptions mOptions;
  bool mStrict = false;
  bool mJson = false;
  std::size_t mLimit = kUsualLimit;
  std::string mOutputPath;
  std::vector<std::string> mInputPaths;
};

void PrintTrouble(const Verdict& verdict, Output& errors) {
  for (const Obstacle& trouble : verdict.mTrouble) {
    const std::string path = trouble.mPath + (trouble.mPath.empty() ? "" : ": ");
    errors.Line("ryx verify: " + Escape(path + trouble.mText, errors.GetStyle()));
  }
}

int VerifyCommand::Run(Output& output, Output& errors) {
  const MergeRequest request = MakeMergeRequest(mOptions, mInputPaths, mOutputPath);
  Verdict verdict(mLimit);
  Examine(mOptions, request, verdict);
  PrintTrouble(verdict, errors);
  if (mJson) {
    output.Line(FormatJson(VerdictJson(request, verdict)));
  } else if (verdict.mTrouble.empty()) {
    PrintVerdict(request, verdict, output);
    PrintWarnings(verdict.mWarnings, output);
  }
  if (!verdict.mTrouble.empty()) return kTrouble;
  const bool isRefused = mStrict && !verdict.mWarnings.empty();
  return verdict.IsGood() && !isRefused ? kSuccess : kDiffers;
}

}  // namespace

std::unique_ptr<Command> MakeVerifyCommand() { return std::make_unique<VerifyCommand>(); }

}  // namespace Qov::Tools
