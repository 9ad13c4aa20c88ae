#include "MergeChecks.h"

#include <algorithm>
#include <filesystem>
#include <utility>
#include <vector>

#include "Qov/Util/Raise.h"
#include "check/UnreadContent.h"
#include "ledger/ExpectModel.h"
#include "ledger/VerifyOutput.h"
#include "merge/MergeChoice.h"
#include "merge/ModelNaming.h"

namespace Qov::Tools {
namespace {

constexpr std::size_t kMostFaults = 20;

std::vector<std::string> ListModels(const std::vector<std::string>& inputs) {
  std::vector<std::string> models;
  for (const std::string& input : inputs) {
    if (!IsViewPointFile(input)) models.push_back(input);
  }
  return models;
}

/// Finds options without effect.
void FindUselessOptions(const QovRyx::MergeRequest& request, const MergeMode& mode,
                        std::vector<Warning>& warnings) {
  const auto add = [&warnings](const char* option, const char* why, const char* remedy) {
    warnings.push_back({"no-effect", "", std::string(option) + " has no effect " + why, remedy});
  };
  const char* leaveOut = "Leave the option out.";
  if (request.mFirstNumber != 1 && mode.mNames != QovRyx::MergedNames::Number) {
    add("--first-number", "without --names number", "Add --names number.");
  }
  if (request.mNames != QovRyx::MergedNames::Automatic && !IsInstanceMode(mode)) {
    add("--names", "in a merge as datasets", leaveOut);
  }
}

void AddObstacles(const QovRyx::MergeRequest& request, MergePlan& plan) {
  std::error_code ignored;
  const auto status = std::filesystem::symlink_status(request.mOutput, ignored);
  if (!request.mSettings.mOverwrite && std::filesystem::exists(status)) {
    plan.mObstacles.push_back({request.mOutput, "exists; --overwrite replaces it", ""});
  }
}

}  // namespace

MergeRequest DescribeMerge(const QovRyx::MergeRequest& request) {
  MergeRequest described;
  described.mMode.mNames = request.mNames;
  described.mInputs = request.mInputs;
  described.mOutput = request.mOutput;
  described.mJoin = request.mJoin;
  described.mViews = request.mViews;
  described.mSelection = request.mSelection;
  described.mShare = request.mShare;
  return described;
}

void ChooseMerge(const QovRyx::MergeRequest& request, MergeRequest& described) {
  const std::vector<std::string> models = ListModels(request.mInputs);
  const QovRyx::MergeChoice choice = QovRyx::ChooseMerge(request, models, [](std::size_t) {});
  const bool isInstances = choice.mMode == QovRyx::MergeMode::Instances;
  described.mMode.mKind = isInstances ? MergeKind::Instances : MergeKind::Datasets;
  described.mMode.mNames = choice.mNames;
  for (const auto& naming : QovRyx::NameModels(models, choice.mNames, request.mFirstNumber)) {
    described.mParts.push_back(naming.mPart);
  }
}

std::vector<Warning> FindMergeWarnings(const QovRyx::MergeRequest& request,
                                       const MergeRequest& described) {
  std::vector<Warning> warnings = FindRequestWarnings({}, described);
  FindUselessOptions(request, described.mMode, warnings);
  return warnings;
}

MergePlan PlanMerge(const QovRyx::MergeRequest& request) {
  MergeRequest described = DescribeMerge(request);
  if (described.CountModels() == 0) {
    Util::Raise("tools/merge/MergeChecks", Util::Exception::ErrorType::InvalidMethod,
                "\"" + request.mInputs.front() +
                    "\" is a view-point file and not a model: name at least one model");
  }
  std::vector<InputFile> inputs = LoadInputs(described);
  std::vector<Warning> warnings;
  if (AllAreReadable(inputs)) {
    ChooseMerge(request, described);
    warnings = FindMergeWarnings(request, described);
  }
  MergePlan plan = MakePlan(std::move(described), std::move(inputs), std::move(warnings));
  AddObstacles(request, plan);
  return plan;
}

Faults VerifyMerge(const QovRyx::MergeRequest& request, const std::string& path) {
  MergeRequest described = DescribeMerge(request);
  ChooseMerge(request, described);
  const std::vector<InputFile> inputs = LoadInputs(described);
  Faults faults(kMostFaults);
  for (const InputFile& input : inputs) {
    if (!input.mError.empty()) faults.Add({0, "", "", input.mPath, input.mError});
  }
  std::vector<Obstacle> obstacles;
  if (faults.GetCount() != 0) return faults;
  ExpectedModel model = ExpectModel(described, inputs, obstacles);
  for (const Obstacle& obstacle : obstacles) {
    faults.Add({0, "", obstacle.mSubject, obstacle.mPath, obstacle.mText});
  }
  if (faults.GetCount() != 0) return faults;
  QovRyx::Tree output(false);
  QovRyx::Tree::IdMap ids;
  output.Load(path, ids, QovRyx::Tree::ReadMode::Everything,
              QovRyx::Tree::SupportedFileFormats::Ryx);
  VerifyOutput(model, inputs, output, faults);
  AddUnreadContent(FindUnreadContent(path), faults);
  return faults;
}

}  // namespace Qov::Tools
