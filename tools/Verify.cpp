#include <fmt/format.h>

#include <CLI/App.hpp>
#include <exception>
#include <filesystem>
#include <new>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "Command.h"
#include "ErrorText.h"
#include "OptionValues.h"
#include "Plural.h"
#include "Qov/Util/FileContext.h"
#include "Qov/Util/Raise.h"
#include "SafeOutput.h"
#include "check/UnreadContent.h"
#include "diagnostics/Printable.h"
#include "html/ReportPage.h"
#include "html/ReportPictures.h"
#include "ledger/ExpectModel.h"
#include "ledger/FaultText.h"
#include "ledger/LedgerJson.h"
#include "ledger/LedgerText.h"
#include "ledger/MakeLedger.h"
#include "ledger/RecognizeMerge.h"
#include "ledger/VerifyOutput.h"
#include "ledger/WarningReport.h"
#include "ledger/Warnings.h"
#include "merge/CheckOptions.h"
#include "merge/InputOptions.h"
#include "merge/MergeChecks.h"

namespace Qov::Tools {
namespace {

constexpr int kDiffers = 1;
constexpr std::size_t kUsualLimit = 20;

constexpr const char* kFooter =
    "Takes the options and inputs of a run of RyxMerge or of ryx merge. Without options it finds\n"
    "out which of them made OUTPUT, if all options of that run had their defaults. Compares every "
    "value of every result in\n"
    "OUTPUT with the input that it comes from, and names, links, attributes, materials, node "
    "sets,\n"
    "views and the history. The first line says so if the output was merged with other options or\n"
    "from other inputs. Warnings come last, like those of ryx plan.\n"
    "\n"
    "Exit status: 0 nothing is missing and all values match, 1 something differs, or there are\n"
    "warnings and --strict is given, 2 failure.\n"
    "\n"
    "Example: ryx verify --merge-as-instances --arrange-files all.ryx run*.ryx\n"
    "         ryx verify --names stem --natural-order all.ryx run*.ryx";

/// The result of a verification.
struct Verdict {
  explicit Verdict(std::size_t limit) : mFaults(limit) {}

  bool IsGood() const { return mTrouble.empty() && mFaults.GetCount() == 0 && mLedger.AddsUp(); }

  std::vector<Obstacle> mTrouble;  ///< Reasons why nothing was compared.
  /// Describes how the output was merged, if not as requested. Not escaped.
  std::string mRecognized;
  Ledger mLedger;
  Faults mFaults;
  std::vector<Warning> mWarnings;
};

/// Returns false and adds the reasons to the verdict if inputs cannot be read.
bool CheckInputs(const std::vector<InputFile>& inputs, Verdict& verdict) {
  for (const InputFile& input : inputs) {
    if (!input.mError.empty()) verdict.mTrouble.push_back({input.mPath, input.mError, ""});
  }
  return verdict.mTrouble.empty();
}

/// Returns false and adds the reason to the verdict if the output cannot be loaded.
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

/// Returns the reason why an array or a node set of an input cannot be read, with its path.
Obstacle DescribeUnreadableInput(const std::exception& error) {
  const auto* concerned = dynamic_cast<const Util::FileContext*>(&error);
  const std::string path = concerned == nullptr ? "" : concerned->GetFilePath();
  return {path, FileErrorText(path, error), ""};
}

/// Adds the warnings about the content after those about the request.
void AddWarnings(const std::vector<InputFile>& inputs, const ExpectedModel& model,
                 Verdict& verdict) {
  const Ledger planned = MakeLedger(model, inputs);
  for (Warning& warning : FindContentWarnings(inputs, model, planned)) {
    verdict.mWarnings.push_back(std::move(warning));
  }
}

/// Compares an output with a merge of inputs that can be read.
void Compare(const MergeRequest& request, const std::vector<InputFile>& inputs,
             const QovRyx::Tree& output, Verdict& verdict) {
  std::vector<Obstacle> obstacles;
  ExpectedModel model = ExpectModel(request, inputs, obstacles);
  for (const Obstacle& obstacle : obstacles) {
    const std::string text = "cannot be merged: " + obstacle.mText;
    verdict.mFaults.Add({0, "", obstacle.mSubject, obstacle.mPath, text});
  }
  verdict.mLedger = model.mLedger;
  if (!obstacles.empty()) return;
  AddWarnings(inputs, model, verdict);
  try {
    VerifyOutput(model, inputs, output, verdict.mFaults);
    AddUnreadContent(FindUnreadContent(request.mOutput), verdict.mFaults);
  } catch (const std::exception& error) {
    verdict.mTrouble.push_back(DescribeUnreadableInput(error));
    return;
  }
  if (verdict.mRecognized.empty()) verdict.mRecognized = RecognizeOtherInputs(model, inputs);
  verdict.mLedger = MakeLedger(model, inputs, CountItems(output));
}

/// Returns the program of a merge as a part of a sentence; empty for RyxMerge.
const char* ProgramOf(const MergeRequest& request) {
  return request.mMode.IsOfRyxMerge() ? "" : "by ryx merge ";
}

/// Returns the verdict in one sentence.
std::string VerdictText(const Verdict& verdict) {
  if (!verdict.IsGood()) return "Not OK: " + Plural(verdict.mFaults.GetCount(), "difference");
  return HasWarningOfLoss(verdict.mWarnings)
             ? "OK: all values match. The warnings list data that the merge leaves out."
             : "OK: nothing is missing and all values match.";
}

/// Writes the page of --html.
void WriteReport(const Verdict& verdict, const std::string& output, SafeOutput& page) {
  using Kind = MergeReport::Kind;
  MergeReport report;
  report.mPath = output;
  report.mVerdict = VerdictText(verdict);
  report.mVerdict.erase(0, report.mVerdict.find(": ") + 2);  // the page shows if it is OK
  report.mIsOk = verdict.IsGood();
  for (const Fault& fault : verdict.mFaults.GetFirst()) {
    report.mLines.emplace_back(Kind::Error, FaultText(fault, {}));
  }
  const std::uint64_t hidden = verdict.mFaults.GetCount() - verdict.mFaults.GetFirst().size();
  if (hidden != 0) report.mLines.emplace_back(Kind::Error, fmt::format("and {} more", hidden));
  for (const Warning& warning : verdict.mWarnings) {
    const std::string path = warning.mPath.empty() ? "" : warning.mPath + ": ";
    report.mLines.emplace_back(Kind::Warning,
                               Escape(path + warning.mText + ". " + warning.mRemedy, {}));
  }
  if (!verdict.mRecognized.empty()) {
    report.mNotes.push_back("The output was " + Escape(verdict.mRecognized, {}));
  }
  report.mPictures = DrawGeometries(output, report.mNotes);
  WriteReportPage(report, verdict.mLedger, page);
  page.Commit();
}

void PrintVerdict(const MergeRequest& request, const Verdict& verdict, LedgerDetail detail,
                  Output& output) {
  const TextStyle& style = output.GetStyle();
  const std::string path = Escape(request.mOutput, style);
  if (verdict.mRecognized.empty()) {
    output.Line(fmt::format("{}, merged {}as {}", path, ProgramOf(request), NameOf(request.mMode)));
  } else {
    output.Line(fmt::format("{} was {}", path, Escape(verdict.mRecognized, style)));
    output.Line(fmt::format("Compared with the merge of these inputs {}as {}", ProgramOf(request),
                            NameOf(request.mMode)));
  }
  PrintLedger(verdict.mLedger, request.mOutput, detail, output);
  output.Line();
  output.Line(VerdictText(verdict));
  if (verdict.IsGood()) return;
  const std::uint64_t count = verdict.mFaults.GetCount();
  for (const Fault& fault : verdict.mFaults.GetFirst()) {
    output.Line("  " + FaultText(fault, style));
  }
  const std::uint64_t hidden = count - verdict.mFaults.GetFirst().size();
  if (hidden != 0) output.Line(fmt::format("  and {} more", hidden));
}

Json FaultsJson(const Faults& faults) {
  Json first = Json::array();
  for (const Fault& fault : faults.GetFirst()) {
    Json entry = Json::object();
    if (fault.mNode != 0) {
      entry["node"] = fault.mNode;
      entry["name"] = JsonText(fault.mNodeName);
    }
    if (!fault.mSubject.empty()) entry["subject"] = JsonText(fault.mSubject);
    if (!fault.mInput.empty()) entry["input"] = JsonText(fault.mInput);
    entry["text"] = Escape(fault.mText, {});
    first.push_back(std::move(entry));
  }
  return {{"count", faults.GetCount()}, {"first", first}};
}

Json VerdictJson(const MergeRequest& request, const Verdict& verdict) {
  Json document = MakeJsonDocument("verify");
  document["program"] = request.mMode.IsOfRyxMerge() ? "RyxMerge" : "ryx merge";
  document["mode"] = NameOf(request.mMode);
  document["path"] = JsonText(request.mOutput);
  document["addsUp"] = verdict.IsGood();
  if (!verdict.mRecognized.empty()) document["recognized"] = Escape(verdict.mRecognized, {});
  document["trouble"] = Json::array();
  for (const Obstacle& trouble : verdict.mTrouble) {
    document["trouble"].push_back(
        {{"path", JsonText(trouble.mPath)}, {"text", Escape(trouble.mText, {})}});
  }
  if (!verdict.mTrouble.empty()) return document;
  document["warnings"] = WarningsJson(verdict.mWarnings);
  document["differences"] = FaultsJson(verdict.mFaults);
  document["ledger"] = LedgerJson(verdict.mLedger);
  return document;
}

class VerifyCommand : public Command {
 public:
  const char* GetName() const override { return "verify"; }
  const char* GetSummary() const override {
    return "Compare the output of a merge with its inputs";
  }
  const char* GetFooter() const override { return kFooter; }
  void Declare(CLI::App& app) override {
    mOptions.Declare(app);
    CLI::Option* page = app.add_option("--html", mPagePath, "Write a page for a browser too")
                            ->type_name("OUT.html");
    app.add_flag("--overwrite", mOverwrite, "Replace an existing page")->needs(page);
    app.add_option("--limit", mLimit, "Differences to show")
        ->capture_default_str()
        ->transform(WholeNumber());
    app.add_option("OUTPUT", mOutputPath, "The merged model")->required();
    mInputs.Declare(app, mInputPaths, "The inputs of the merge");
  }
  int Run(Output& output, Output& errors) override;

 private:
  void RecognizeProgram(const std::vector<InputFile>& inputs, const QovRyx::Tree& output,
                        MergeRequest& request);
  void Verify(MergeRequest& request, Verdict& verdict);
  void OpenPage(std::optional<SafeOutput>& page) const;

  CheckOptions mOptions;
  std::string mPagePath;
  bool mOverwrite = false;
  std::size_t mLimit = kUsualLimit;
  std::string mOutputPath;
  InputOptions mInputs;
  std::vector<std::string> mInputPaths;
};

void PrintTrouble(const Verdict& verdict, Output& errors) {
  for (const Obstacle& trouble : verdict.mTrouble) {
    const std::string path = trouble.mPath + (trouble.mPath.empty() ? "" : ": ");
    errors.Line("ryx verify: " + Escape(path + trouble.mText, errors.GetStyle()));
  }
}

/// Chooses the merge of `ryx merge` if its options are given. Without any options chooses it if the
/// output fits it and not that of RyxMerge.
void VerifyCommand::RecognizeProgram(const std::vector<InputFile>& inputs,
                                     const QovRyx::Tree& output, MergeRequest& request) {
  if (!mOptions.IsOfMerge() &&
      (!mOptions.mOfRyxMerge.GetNames().empty() || FitsMerge(request, inputs, output))) {
    return;
  }
  MergeRequest described = DescribeMerge(mOptions.mRequest);
  try {
    if (described.CountModels() != 0) ChooseMerge(mOptions.mRequest, described);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {
    if (mOptions.IsOfMerge()) throw;
    return;  // ryx merge would have failed, so that the output is not its own
  }
  if (mOptions.IsOfMerge() || FitsMerge(described, inputs, output)) request = std::move(described);
}

void VerifyCommand::Verify(MergeRequest& request, Verdict& verdict) {
  std::vector<InputFile> inputs = LoadInputs(request);
  QovRyx::Tree output(false);
  if (!CheckInputs(inputs, verdict) || !LoadOutput(request.mOutput, output, verdict)) return;
  RecognizeProgram(inputs, output, request);
  const bool isOfRyxMerge = request.mMode.IsOfRyxMerge();
  if (request.mMode.mKind == MergeKind::Nothing) {
    const char* program = isOfRyxMerge ? "RyxMerge" : "ryx merge";
    verdict.mTrouble.push_back(
        {"", std::string(program) + " writes no output for these inputs", ""});
    return;
  }
  if (isOfRyxMerge) verdict.mRecognized = RecognizeOtherMerge(request, inputs, output);
  verdict.mWarnings = isOfRyxMerge ? FindRequestWarnings(mOptions.mOfRyxMerge, request)
                                   : FindMergeWarnings(mOptions.mRequest, request);
  Compare(request, inputs, output, verdict);
}

/// Opens the page of --html. Refuses to replace one of the models.
void VerifyCommand::OpenPage(std::optional<SafeOutput>& page) const {
  std::vector<std::string> models = mInputPaths;
  models.push_back(mOutputPath);
  for (const std::string& model : models) {
    std::error_code error;
    if (!std::filesystem::equivalent(mPagePath, model, error)) continue;
    Util::Raise("tools/Verify", Util::Exception::ErrorType::MiscellaneousError,
                Util::Quote(mPagePath) + " is one of the models; choose another page");
  }
  QovJbf::RemoveOutputsOnSignals();
  page.emplace(mPagePath, mOverwrite);
}

int VerifyCommand::Run(Output& output, Output& errors) {
  mOptions.mOfMerge.RefuseTogetherWith(mOptions.mOfRyxMerge);
  mInputs.ReadLists();
  MergeRequest request = MakeMergeRequest(mOptions.mOfRyxMerge, mInputPaths, mOutputPath);
  mOptions.mRequest.mInputs = mInputPaths;
  mOptions.mRequest.mOutput = mOutputPath;
  mOptions.mOfMerge.ArrangeInputs(mOptions.mRequest);
  if (mOptions.IsOfMerge()) request = DescribeMerge(mOptions.mRequest);
  std::optional<SafeOutput> page;  // opened first, so that a comparison is not done in vain
  if (!mPagePath.empty()) OpenPage(page);
  Verdict verdict(mLimit);
  Verify(request, verdict);
  PrintTrouble(verdict, errors);
  if (verdict.mTrouble.empty() && page) WriteReport(verdict, mOutputPath, *page);
  if (mOptions.mJson) {
    output.Line(FormatJson(VerdictJson(request, verdict)));
  } else if (verdict.mTrouble.empty()) {
    const LedgerDetail detail = mOptions.GetDetail();
    PrintVerdict(request, verdict, detail, output);
    PrintWarnings(verdict.mWarnings, detail, output);
  }
  if (!verdict.mTrouble.empty()) return kTrouble;
  const bool isRefused = mOptions.mStrict && !verdict.mWarnings.empty();
  return verdict.IsGood() && !isRefused ? kSuccess : kDiffers;
}

}  // namespace

std::unique_ptr<Command> MakeVerifyCommand() { return std::make_unique<VerifyCommand>(); }

}  // namespace Qov::Tools
