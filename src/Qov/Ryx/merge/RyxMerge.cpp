#include "Qov/Ryx/RyxMerge.h"

#include <cstddef>
#include <cstdint>
#include <memory>

#include "AppendResults.h"
#include "LinkedResults.h"
#include "MergeSteps.h"
#include "MergeSummary.h"
#include "Qov/Jbf/OutputLocks.h"
#include "Qov/Ryx/InstanceNames.h"
#include "Qov/Util/FileContext.h"
#include "ViewPointFiles.h"
#include "model/HistoryDate.h"

namespace QovRyx {
namespace {

InstanceNaming ChooseNaming(bool useSuffix, bool autoRename) {
  if (autoRename) {
    return useSuffix ? InstanceNaming::AutomaticSuffix : InstanceNaming::AutomaticWithoutSuffix;
  }
  return useSuffix ? InstanceNaming::FileSuffix : InstanceNaming::Plain;
}

void Rename(Tree& tree, std::uint64_t k, PartLinksMap& links, InstanceNaming naming) {
  switch (naming) {
    case InstanceNaming::Plain:
      return RenameResults(tree, k, links, false);
    case InstanceNaming::FileSuffix:
      return RenameResults(tree, k, links, true);
    case InstanceNaming::AutomaticSuffix:
      return AutoRenameInstances(tree, k, links, true);
    case InstanceNaming::AutomaticWithoutSuffix:
      return AutoRenameInstances(tree, k, links, false);
  }
}

/// Returns true if further files contribute only results whose names have an instance part.
bool TakesOnlyInstances(InstanceNaming naming) {
  return naming == InstanceNaming::AutomaticSuffix ||
         naming == InstanceNaming::AutomaticWithoutSuffix;
}

/// Renames the results of the first file, and shares those that its instances have in common.
void RenameFirst(Tree& master, const std::string& path, InstanceNaming naming,
                 MergeSummary& summary) {
  PartLinksMap links;
  Qov::Util::WithFileContext(path, [&] {
    Rename(master, 1, links, naming);
    GenerateLinkedResults(master, links, summary.GetDropped());
  });
}

/// Adds the results of file number `k` to the master, and nothing else from that file.
void AddInstance(Tree& master, const std::string& path, std::uint64_t k, InstanceNaming naming,
                 MergeSummary& summary) {
  Tree tree(false);
  LoadModel(tree, path, Tree::ReadMode::WithoutViews);
  summary.AddInput(path);
  summary.AddViewsLeftOut(path);
  summary.AddNodesLeftOut(tree.GetNodes().GetSize());
  PartLinksMap links;
  Qov::Util::WithFileContext(path, [&] {
    Rename(tree, k, links, naming);
    if (TakesOnlyInstances(naming)) {
      AppendOtherInstanceResults(tree, master, summary.GetDropped());
    } else {
      AppendResults(tree, master, summary.GetDropped());
    }
    GenerateLinkedResults(master, links, summary.GetDropped());
  });
}

}  // namespace

void AppendResults(Tree& from, Tree& into, bool /*appendFlag*/) {
  DroppedResults ignored;
  AppendResults(from, into, ignored);
}

void AppendOtherInstanceResults(Tree& from, Tree& into) {
  DroppedResults ignored;
  AppendOtherInstanceResults(from, into, ignored);
}

int merge_as_instances(const std::vector<std::string>& files, const std::string& output,
                       InstanceNaming naming) {
  return RunMergeStep([&] {
    RefuseOutputAmongInputs(files, output);
    MergeSummary summary;
    const std::unique_ptr<Tree> master = MakeModelTree();
    LoadModel(*master, files.at(0));
    summary.AddInput(files[0]);
    RenameFirst(*master, files[0], naming, summary);
    for (std::size_t i = 1; i < files.size(); ++i) {
      AddInstance(*master, files[i], i + 1, naming, summary);
    }
    SaveModel(*master, output);
    summary.Log({"Merged ", files.size(), " files as instances"}, *master, output);
    summary.WarnOfLostValues();
  });
}

int merge_as_instances(const std::vector<std::string>& files, const std::string& output,
                       bool /*appendFlag*/, bool useSuffix, bool autoRename) {
  return merge_as_instances(files, output, ChooseNaming(useSuffix, autoRename));
}

int merge_as_datasets(const std::vector<std::string>& files, const std::string& output) {
  return RunMergeStep([&] {
    RefuseOutputAmongInputs(files, output);
    MergeSummary summary;
    for (const std::string& path : files) summary.AddInput(path);
    const std::unique_ptr<Tree> tree = MakeDatasetTree();
    LoadModel(*tree, files.at(0));
    for (std::size_t i = 1; i < files.size(); ++i) {
      MergeModel(*tree, files[i]);
      summary.AddViewsLeftOut(files[i]);
    }
    SaveModel(*tree, output);
    summary.Log({"Merged ", files.size(), " files as datasets"}, *tree, output);
  });
}

int merge_viewpoints_with_ryx(const std::string& model,
                              const std::vector<std::string>& viewPointFiles,
                              const std::string& output) {
  return RunMergeStep([&] {
    RefuseOutputAmongInputs({model}, output);
    RefuseOutputAmongInputs(viewPointFiles, output);
    MergeSummary summary;
    summary.AddInput(model);
    const std::unique_ptr<Tree> tree = MakeModelTree();
    LoadModel(*tree, model);
    for (const std::string& path : viewPointFiles) {
      summary.AddInput(path);
      Qov::Util::WithFileContext(path, [&] { AddViewPoints(*tree, path, ReportLeftOut); });
    }
    SaveModel(*tree, output);
    summary.Log({"Added the views of ", viewPointFiles.size(), " files"}, *tree, output);
  });
}

int check_before_merge(const std::vector<std::string>& models,
                       const std::vector<std::string>& viewPointFiles, const std::string& output) {
  return RunMergeStep([&] {
    RefuseOutputAmongInputs(models, output);
    RefuseOutputAmongInputs(viewPointFiles, output);
    QovJbf::CheckOutputIsFree(output);
    FormatHistoryDate();
    for (const std::string& path : viewPointFiles) {
      Qov::Util::WithFileContext(path, [&] { CheckViewPointFile(path); });
    }
  });
}

}  // namespace QovRyx
