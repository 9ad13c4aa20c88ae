#include <fmt/format.h>

#include <CLI/App.hpp>
#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "Command.h"
#include "OptionValues.h"
#include "Plan.h"
#include "Qov/Util/Raise.h"
#include "ValueText.h"
#include "ledger/ExpectModel.h"
#include "ledger/LedgerJson.h"
#include "ledger/LedgerText.h"
#include "ledger/MakeLedger.h"
#include "ledger/Obstacles.h"
#include "ledger/SizeEstimate.h"
#include "ledger/WarningReport.h"
#include "ledger/Warnings.h"
#include "merge/CheckOptions.h"
#include "merge/MergeChecks.h"
#include "shards/ShardPlan.h"
#include "shards/ShardReport.h"
#include "shards/ShardScripts.h"
#include "shards/ShardedMerge.h"

namespace Qov::Tools {
namespace {

constexpr const char* kFooter =
    "Takes the command line of RyxMerge, or the options of ryx merge, and shows the effects of the "
    "merge: the order of the\n"
    "inputs, what is copied and what is dropped, new names, links, and the size of the output.\n"
    "Writes nothing and reads no values of results. Warnings come last, each with a remedy.\n"
    "\n"
    "Exit status: 0 the merge can be done, 1 it would fail, or there are warnings and --strict is\n"
    "given, 2 failure.\n"
    "\n"
    "With --shards and --slurm, the arguments of ryx merge follow --. Writes scripts into DIR "
    "that\n"
    "make the same model in parts: with Slurm (sh DIR/submit) or without (sh DIR/run-here).\n"
    "\n"
    "Example: ryx plan --merge-as-instances --arrange-files run*.ryx all.ryx\n"
    "         ryx plan --as auto --results Stress run*.ryx all.ryx\n"
    "         ryx plan --shards 8 --slurm jobs -- run*.ryx -o all.ryx";

void Append(std::vector<Warning> more, std::vector<Warning>& warnings) {
  warnings.insert(warnings.end(), more.begin(), more.end());
}

Warning MakeSpaceWarning(const MergeRequest& request, const SizeEstimate& size) {
  return {"no-room", request.mOutput,
          fmt::format("the merge needs about {}, but only {} are free", SizeText(size.mNeeded),
                      SizeText(*size.mFree)),
          "Free some space, or write the output to another disk."};
}

/// Counts the results that share their name with an earlier result of the geometry.
std::uint64_t CountDuplicates(const ExpectedModel& model) {
  std::uint64_t count = 0;
  for (const auto& [id, node] : model.mNodes) {
    std::unordered_set<std::string_view> names;
    for (const ExpectedResult& result : node.mResults) count += !names.insert(result.mName).second;
  }
  return count;
}

/// Prints a plan as text.
class PlanReport {
 public:
  PlanReport(const MergePlan& plan, LedgerDetail detail, Output& output)
      : mPlan(plan), mDetail(detail), mOutput(output) {}

  void Print();

 private:
  void PrintOrder();
  void PrintObstacles();
  void PrintSize();
  void PrintVerdict();
  std::string Shown(const std::string& text) const { return Escape(text, mOutput.GetStyle()); }

  const MergePlan& mPlan;
  LedgerDetail mDetail;
  Output& mOutput;
};

void PlanReport::PrintOrder() {
  const MergeRequest& request = mPlan.mRequest;
  const bool isChosen = request.mMode.mKind != MergeKind::Nothing || request.mMode.IsOfRyxMerge();
  mOutput.Line(fmt::format("Merge {}into {}",
                           isChosen ? fmt::format("as {} ", NameOf(request.mMode)) : "",
                           Shown(request.mOutput)));
  constexpr std::size_t kMostShown = 20;
  constexpr std::size_t kShownAtEachEnd = 3;
  const std::size_t numInputs = mPlan.mInputs.size();
  const bool showsAll = mDetail == LedgerDetail::Full || numInputs <= kMostShown;
  std::size_t numHidden = 0;
  for (std::size_t i = 0; i < numInputs; ++i) {
    const InputFile& input = mPlan.mInputs[i];
    const bool isAtEnd = i < kShownAtEachEnd || i + kShownAtEachEnd >= numInputs;
    if (!showsAll && !isAtEnd && input.mNote.empty()) {
      ++numHidden;
      continue;
    }
    if (numHidden != 0) mOutput.Line(fmt::format("  ...  ({} more)", numHidden));
    numHidden = 0;
    const std::string number = input.mIsViewFile ? "-" : std::to_string(input.mNumber);
    std::string line = fmt::format("  {:>3}  {}", number, Shown(input.mPath));
    if (!input.mNote.empty()) line += Dim(" (" + input.mNote + ")", mOutput.GetStyle());
    mOutput.Line(line);
  }
}

void PlanReport::PrintObstacles() {
  constexpr std::size_t kMost = 20;
  mOutput.Line();
  mOutput.Line("The merge would fail:");
  const auto& obstacles = mPlan.mObstacles;
  for (std::size_t i = 0; i < std::min(kMost, obstacles.size()); ++i) {
    std::string line = obstacles[i].mPath.empty() ? "" : Shown(obstacles[i].mPath) + ": ";
    line += Shown(obstacles[i].mText);
    if (!obstacles[i].mSubject.empty()) line += " (" + Shown(obstacles[i].mSubject) + ")";
    mOutput.Line("  " + line);
  }
  if (obstacles.size() > kMost) {
    mOutput.Line(fmt::format("  and {} more reasons", obstacles.size() - kMost));
  }
}

void PlanReport::PrintSize() {
  const SizeEstimate& size = mPlan.mSize;
  std::string line = fmt::format("{} of values, about {} in the file", SizeText(size.mValues),
                                 SizeText(size.mFile));
  if (mPlan.mRequest.NeedsCopy()) line += ", and a temporary copy of it is not deleted";
  mOutput.Line();
  mOutput.Line(line);
  if (!size.mFree) return;
  mOutput.Line(fmt::format("{} are free: {}", SizeText(*size.mFree),
                           size.Fits() ? "enough" : "probably not enough"));
}

void PlanReport::PrintVerdict() {
  if (!mPlan.mObstacles.empty()) {
    PrintObstacles();
  } else if (mPlan.mRequest.mMode.mKind == MergeKind::Nothing) {
    mOutput.Line("One model and no view-point file: nothing would be written");
  } else if (mPlan.HasSpace()) {
    mOutput.Line("The merge can be done");
  } else {
    mOutput.Line("The merge would probably fail: there is not enough free space");
  }
}

void PlanReport::Print() {
  PrintOrder();
  if (mPlan.mLedger) {
    PrintLedger(*mPlan.mLedger, mPlan.mRequest.mOutput, mDetail, mOutput);
    PrintSize();
  }
  PrintVerdict();
  PrintWarnings(mPlan.mWarnings, mDetail, mOutput);
}

Json OrderJson(const std::vector<InputFile>& inputs) {
  Json order = Json::array();
  for (const InputFile& input : inputs) {
    Json entry = {{"path", JsonText(input.mPath)},
                  {"type", input.mIsViewFile ? "view points" : "model"}};
    if (!input.mIsViewFile) entry["number"] = input.mNumber;
    if (!input.mNote.empty()) entry["note"] = input.mNote;
    order.push_back(std::move(entry));
  }
  return order;
}

Json ObstaclesJson(const std::vector<Obstacle>& obstacles) {
  Json list = Json::array();
  for (const Obstacle& obstacle : obstacles) {
    Json entry = {{"path", JsonText(obstacle.mPath)}, {"text", Escape(obstacle.mText, {})}};
    if (!obstacle.mSubject.empty()) entry["subject"] = JsonText(obstacle.mSubject);
    list.push_back(std::move(entry));
  }
  return list;
}

class PlanCommand : public Command {
 public:
  const char* GetName() const override { return "plan"; }
  const char* GetSummary() const override {
    return "Show the effects of a merge before it is done";
  }
  const char* GetFooter() const override { return kFooter; }
  void Declare(CLI::App& app) override {
    mOptions.Declare(app);
    mpShards = app.add_option("--shards", mNumShards, "Divide the merge into N parts")
                   ->type_name("N")
                   ->transform(WholeNumber());
    auto* slurm = app.add_option("--slurm", mFolder, "Write the scripts of the parts into DIR")
                      ->type_name("DIR");
    mpShards->needs(slurm);
    slurm->needs(mpShards);
    app.add_option("PATH", mPaths, "The inputs, and then the output")->required()->expected(2, -1);
  }
  int Run(Output& output, Output& errors) override;

 private:
  MergePlan MakePlanOfRyxMerge() const;
  int PlanShards(Output& output) const;
  void Print(const MergePlan& plan, Output& output) const {
    PrintPlan(plan, mOptions.GetDetail(), output);
  }

  CheckOptions mOptions;
  CLI::Option* mpShards = nullptr;
  std::size_t mNumShards = 0;
  std::string mFolder;
  std::vector<std::string> mPaths;
};

MergePlan PlanCommand::MakePlanOfRyxMerge() const {
  MergeRequest request =
      MakeMergeRequest(mOptions.mOfRyxMerge, mOptions.mRequest.mInputs, mOptions.mRequest.mOutput);
  std::vector<Warning> warnings = FindOutputWarnings(request);
  Append(FindRequestWarnings(mOptions.mOfRyxMerge, request), warnings);
  std::vector<InputFile> files = LoadInputs(request);
  return MakePlan(std::move(request), std::move(files), std::move(warnings));
}

/// Writes the scripts of a divided merge, if the merge can be done.
int PlanCommand::PlanShards(Output& output) const {
  if (!mOptions.mOfRyxMerge.GetNames().empty() || mOptions.IsOfMerge()) {
    Util::Raise("tools/Plan", Util::Exception::ErrorType::InvalidMethod,
                "with --shards, the options of the merge stand after \"--\"");
  }
  CheckShardFolder(mFolder);
  const ShardedMerge merge(mPaths);
  QovRyx::CheckSettings(merge.GetRequest().mSettings);
  const MergePlan plan = PlanMerge(merge.GetRequest());
  const int status = StatusOf(plan, mOptions.mStrict || merge.IsStrict());
  std::optional<ShardPlan> shards;
  if (status == kSuccess) {
    shards = DivideMerge(merge, plan, mNumShards, mFolder);
    WriteShardScripts(merge, *shards);
  }
  if (mOptions.mJson) {
    Json document = PlanJson(plan);
    if (shards) document["shards"] = ShardsJson(*shards);
    output.Line(FormatJson(document));
    return status;
  }
  Print(plan, output);
  if (shards) {
    PrintShards(*shards, mNumShards, output);
  } else {
    output.Line("No scripts were written");
  }
  return status;
}

int PlanCommand::Run(Output& output, Output& /*errors*/) {
  if (mpShards->count() != 0) return PlanShards(output);
  mOptions.mOfMerge.RefuseTogetherWith(mOptions.mOfRyxMerge);
  mOptions.mRequest.mInputs.assign(mPaths.begin(), mPaths.end() - 1);
  mOptions.mRequest.mOutput = mPaths.back();
  mOptions.mOfMerge.ArrangeInputs(mOptions.mRequest);
  const bool isOfRyxMerge = !mOptions.IsOfMerge();
  if (isOfRyxMerge && mOptions.mRequest.mInputs.size() < 2) {
    Util::Raise("tools/Plan", Util::Exception::ErrorType::InvalidMethod,
                "RyxMerge needs two or more inputs: name them before the output");
  }
  const MergePlan plan = isOfRyxMerge ? MakePlanOfRyxMerge() : PlanMerge(mOptions.mRequest);
  if (mOptions.mJson) {
    output.Line(FormatJson(PlanJson(plan)));
  } else {
    Print(plan, output);
  }
  return StatusOf(plan, mOptions.mStrict);
}

}  // namespace

MergePlan MakePlan(MergeRequest request, std::vector<InputFile> inputs,
                   std::vector<Warning> warnings) {
  MergePlan plan;
  plan.mWarnings = std::move(warnings);
  plan.mInputs = std::move(inputs);
  plan.mRequest = std::move(request);
  plan.mObstacles = FindFileObstacles(plan.mRequest, plan.mInputs);
  if (plan.mRequest.mMode.mKind == MergeKind::Nothing) return plan;
  if (!AllAreReadable(plan.mInputs)) return plan;
  const std::size_t numFileObstacles = plan.mObstacles.size();
  const ExpectedModel model = ExpectModel(plan.mRequest, plan.mInputs, plan.mObstacles);
  if (plan.mObstacles.size() != numFileObstacles) return plan;
  plan.mLedger = MakeLedger(model, plan.mInputs);
  plan.mNumDuplicates = CountDuplicates(model);
  plan.mSize = EstimateSize(plan.mRequest, plan.mInputs, model, *plan.mLedger);
  if (!plan.HasSpace()) plan.mWarnings.push_back(MakeSpaceWarning(plan.mRequest, plan.mSize));
  Append(FindContentWarnings(plan.mInputs, model, *plan.mLedger), plan.mWarnings);
  return plan;
}

void PrintPlan(const MergePlan& plan, LedgerDetail detail, Output& output) {
  PlanReport(plan, detail, output).Print();
}

Json PlanJson(const MergePlan& plan) {
  Json document = MakeJsonDocument("plan");
  document["mode"] = NameOf(plan.mRequest.mMode);
  document["path"] = JsonText(plan.mRequest.mOutput);
  document["order"] = OrderJson(plan.mInputs);
  document["obstacles"] = ObstaclesJson(plan.mObstacles);
  document["warnings"] = WarningsJson(plan.mWarnings);
  if (!plan.mLedger) return document;
  document["size"] = {
      {"values", plan.mSize.mValues}, {"file", plan.mSize.mFile}, {"needed", plan.mSize.mNeeded}};
  if (plan.mSize.mFree) document["size"]["free"] = *plan.mSize.mFree;
  document["duplicates"] = plan.mNumDuplicates;
  document["ledger"] = LedgerJson(*plan.mLedger);
  return document;
}

int StatusOf(const MergePlan& plan, bool isStrict) {
  if (!plan.mRequest.mMode.IsOfRyxMerge() && !AllAreReadable(plan.mInputs)) return kTrouble;
  const bool isRefused = isStrict && !plan.mWarnings.empty();
  return plan.IsPossible() && !isRefused ? kSuccess : kFindings;
}

std::unique_ptr<Command> MakePlanCommand() { return std::make_unique<PlanCommand>(); }

}  // namespace Qov::Tools
