#pragma once

#include <memory>
#include <string>
#include <vector>

#include "MergeChoice.h"
#include "MergeNotes.h"
#include "MergeSteps.h"
#include "ModelNaming.h"
#include "Qov/Ryx/Merge.h"
#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Reads the models of a merge into one tree. Counts in `report` and `notes` what is left out.
class ModelMerge {
 public:
  ModelMerge(const MergeRequest& request, const std::vector<std::string>& models,
             const BeforeModel& before, MergeReport& report, MergeNotes& notes)
      : mRequest(request), mModels(models), mBefore(before), mReport(report), mNotes(notes) {}

  /// Returns the nodes of the first model with the results of all models.
  std::unique_ptr<Tree> MergeInstances(MergedNames names);
  /// Returns the nodes of all models below one group.
  std::unique_ptr<Tree> MergeDatasets();

 private:
  std::vector<ModelNaming> NameAll(MergedNames names) const;
  std::unique_ptr<Tree> JoinInstances();
  std::unique_ptr<Tree> StartPart(const std::vector<ModelNaming>& namings);
  std::unique_ptr<Tree> Start(const std::vector<ModelNaming>& namings);
  void LoadFirst(Tree& tree);
  void AddInstance(Tree& master, const std::string& path, const ModelNaming& naming);
  void AddDataset(Tree& tree, const std::string& path);
  void TakeViews(Tree& tree, const std::string& path);
  void CountViewsLeftOut(const std::string& path);
  Reporter MakeReporter() {
    return [this](const std::string& line) { mNotes.AddLine(line); };
  }

  const MergeRequest& mRequest;
  const std::vector<std::string>& mModels;
  const BeforeModel& mBefore;
  MergeReport& mReport;
  MergeNotes& mNotes;
};

}  // namespace QovRyx
