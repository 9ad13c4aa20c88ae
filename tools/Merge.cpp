#include <fmt/format.h>

#include <CLI/App.hpp>
#include <exception>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Command.h"
#include "ErrorText.h"
#include "OutputSettingsOptions.h"
#include "Plural.h"
#include "Qov/Ryx/Merge.h"
#include "Qov/Util/Raise.h"
#include "container/SignalRemovals.h"
#include "container/TemporaryOutput.h"
#include "ledger/FaultText.h"
#include "ledger/WarningReport.h"
#include "merge/InputOptions.h"
#include "merge/InputProgress.h"
#include "merge/MergeChecks.h"
#include "merge/MergeJson.h"
#include "merge/MergeRequestOptions.h"
#include "merge/MergeText.h"
#include "merge/PartOptions.h"

namespace Qov::Tools {
namespace {

using ErrorType = Util::Exception::ErrorType;

constexpr const char* kSource = "tools/Merge";

constexpr const char* kFooter =
    "Models with the same tree and the same meshes are merged as instances: the output has their\n"
    "tree once, with the results of all of them. Other models are merged as datasets, below one\n"
    "group. View-point files (.vpt) among the inputs add their views. Equal arrays are stored "
    "once.\n"
    "\n"
    "OUTPUT appears only when it is complete. It is not replaced without --overwrite.\n"
    "\n"
    "Exit status: 0 success, 1 there are warnings and --strict is given, 2 failure.\n"
    "\n"
    "Example: ryx merge run*.ryx --natural-order -o all.ryx\n"
    "         ryx merge left.ryx right.ryx views.vpt --as datasets -o both.ryx\n"
    "         find runs -name '*.ryx' -print0 | sort -z | ryx merge --from - -0 -o all.ryx\n"
    "         ryx merge run*.ryx --results Stress --dry-run -o all.ryx";

class MergeCommand : public Command {
 public:
  const char* GetName() const override { return "merge"; }
  const char* GetSummary() const override { return "Merge models into a new one"; }
  const char* GetFooter() const override { return kFooter; }
  void Declare(CLI::App& app) override;
  int Run(Output& output, Output& errors) override;

 private:
  void CollectInputs();
  LedgerDetail GetDetail() const { return mDetails ? LedgerDetail::Full : LedgerDetail::Summary; }
  void CheckOutput() const;
  int Plan(Output& output) const;
  void RefuseChecksOfParts() const;
  int CheckAndMerge(Output& output, Output& errors);
  int MergeInParts(Output& output);
  int Merge(const std::vector<Warning>& warnings, Output& output);

  QovRyx::MergeRequest mRequest;
  MergeRequestOptions mOptions;
  InputOptions mInputs;
  PartOptions mParts;
  bool mVerify = false;
  bool mStrict = false;
  bool mDryRun = false;
  bool mDetails = false;
  bool mJson = false;
};

void MergeCommand::Declare(CLI::App& app) {
  mInputs.Declare(app, mRequest.mInputs, "Models, and view-point files (.vpt)");
  mOptions.Declare(app, mRequest);
  mParts.Declare(app, mRequest);
  DeclareOutputSettings(app, mRequest.mOutput, mRequest.mSettings);
  app.add_flag("--verify", mVerify, "Compare the output with the inputs before it gets its name");
  app.add_flag("--strict", mStrict, "Do not start if there are warnings");
  app.add_flag("--dry-run", mDryRun, "Show the effects, as ryx plan does, and write nothing");
  app.add_flag("--details", mDetails, "Show equal inputs and equal warnings one by one");
  app.add_flag("--json", mJson, "Print one JSON document");
}

void MergeCommand::CollectInputs() {
  mInputs.ReadLists();
  mParts.ReadStems(mRequest, mInputs.GetSeparator());
  mOptions.ArrangeInputs(mRequest);
}

/// Shows the progress of reading, and verifies the output.
class Listener : public QovRyx::MergeListener {
 public:
  Listener(const QovRyx::MergeRequest& request, bool verify)
      : mRequest(request), mVerify(verify), mProgress(request.mInputs.size()) {}

  bool BeforeInput(std::size_t number, const std::string& /*path*/) override {
    mProgress.ShowInput(number);
    return true;
  }
  void CheckOutput(const std::string& path) override {
    if (!mVerify) return;
    const Faults faults = VerifyMerge(mRequest, path);
    if (faults.GetCount() == 0) return;
    Util::Raise(kSource, ErrorType::MismatchError,
                fmt::format("the merged model has {} and was removed. The first: {}",
                            Plural(faults.GetCount(), "difference"),
                            FaultText(faults.GetFirst().front(), {})));
  }

 private:
  const QovRyx::MergeRequest& mRequest;
  bool mVerify;
  InputProgress mProgress;
};

int MergeCommand::Plan(Output& output) const {
  const MergePlan plan = PlanMerge(mRequest);
  if (mJson) {
    output.Line(FormatJson(PlanJson(plan)));
  } else {
    PrintPlan(plan, GetDetail(), output);
  }
  return StatusOf(plan, mStrict);
}

/// Raises an error before the inputs are read if the output cannot be made.
void MergeCommand::CheckOutput() const {
  QovRyx::CheckSettings(mRequest.mSettings);
  QovJbf::CheckIsNotAnInput(mRequest.mOutput, mRequest.mInputs);
  QovJbf::RemoveOutputsOnSignals();
  const QovJbf::TemporaryOutput probe(mRequest.mOutput, mRequest.mSettings.mOverwrite);
}

/// Prints why inputs cannot be read.
void PrintUnreadable(const std::vector<InputFile>& inputs, Output& errors) {
  for (const InputFile& input : inputs) {
    if (input.mError.empty()) continue;
    const bool namesFile = input.mError.find(input.mPath) != std::string::npos;
    const std::string text = namesFile ? input.mError : input.mPath + ": " + input.mError;
    errors.Line("ryx merge: " + Escape(text, errors.GetStyle()));
  }
}

/// Raises MiscellaneousError for options that check a merge as a whole.
void MergeCommand::RefuseChecksOfParts() const {
  if (!mVerify && !mStrict && !mDryRun) return;
  Util::Raise(
      kSource, ErrorType::MiscellaneousError,
      "a merge in parts cannot be checked before it is joined: leave out --verify, --strict "
      "and --dry-run, and use ryx verify with all inputs");
}

int MergeCommand::CheckAndMerge(Output& output, Output& errors) {
  CheckOutput();
  const MergePlan plan = PlanMerge(mRequest);
  if (!AllAreReadable(plan.mInputs)) {
    PrintUnreadable(plan.mInputs, errors);
    return kTrouble;
  }
  const std::vector<Warning>& warnings = plan.mWarnings;
  PrintWarnings(warnings, GetDetail(), errors);
  if (mStrict && !warnings.empty()) {
    errors.Line("ryx merge: nothing was merged, because of the warnings and --strict");
    return kFindings;
  }
  return Merge(warnings, output);
}

int MergeCommand::Merge(const std::vector<Warning>& warnings, Output& output) {
  Listener listener(mRequest, mVerify);
  const QovRyx::MergeReport report = QovRyx::Merge(mRequest, &listener);
  if (mJson) {
    output.Line(FormatJson(MergeJson(mRequest, report, warnings, mVerify)));
    return kSuccess;
  }
  PrintMerge(mRequest, report, output);
  if (mVerify) {
    const bool isWhole = !HasLeftOut(report) && !HasWarningOfLoss(warnings);
    output.Line(isWhole ? "Verified: nothing is missing and all values match"
                        : "Verified: all values that were taken match");
  }
  return kSuccess;
}

int MergeCommand::MergeInParts(Output& output) {
  RefuseChecksOfParts();
  CheckOutput();
  return Merge({}, output);
}

int MergeCommand::Run(Output& output, Output& errors) {
  try {
    CollectInputs();
    if (IsInParts(mRequest)) return MergeInParts(output);
    return mDryRun ? Plan(output) : CheckAndMerge(output, errors);
  } catch (const std::exception& error) {
    errors.Line("ryx merge: " + DescribeErrorOfFile(error, errors.GetStyle()));
    return kTrouble;
  }
}

}  // namespace

std::unique_ptr<Command> MakeMergeCommand() { return std::make_unique<MergeCommand>(); }

}  // namespace Qov::Tools
