#include "Qov/Ryx/RyxMerge.h"

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>

#include "MergeSteps.h"
#include "MergeSummary.h"
#include "Qov/Log/Record.h"
#include "Qov/Ryx/FileVersionScope.h"
#include "Qov/Ryx/InstanceNames.h"
#include "Qov/Util/Raise.h"

namespace QovRyx {
namespace {

/// The magic and the version text.
constexpr off_t kHeaderSize = 12;

/// How one instance merge renames and what it takes.
struct InstanceNaming {
  bool mUseSuffix;
  bool mAutoRename;
};

void Rename(Tree& tree, std::uint64_t k, PartLinksMap& links, const InstanceNaming& naming) {
  if (naming.mAutoRename) {
    AutoRenameInstances(tree, k, links, naming.mUseSuffix);
  } else {
    RenameResults(tree, k, links, naming.mUseSuffix);
  }
}

/// The results of file number `k` go over to the master; nothing else of it does.
void AddInstance(Tree& master, const std::string& path, std::uint64_t k,
                 const InstanceNaming& naming, MergeSummary& summary) {
  Tree tree(false);
  LoadModel(tree, path);
  summary.AddInput(path);
  summary.AddNodesLeftOut(tree.GetNodes().GetSize());
  PartLinksMap links;
  Qov::Util::Concerning(path, [&] {
    Rename(tree, k, links, naming);
    if (naming.mAutoRename) {
      AppendOtherInstanceResults(tree, master, summary.GetDropped());
    } else {
      AppendResults(tree, master, summary.GetDropped());
    }
    GenerateLinkedResults(master, links, summary.GetDropped());
  });
}

void CheckHeaderSize(const QovJbf::JbFile& file) {
  ::fseeko(file.GetStream(), 0, SEEK_END);
  if (::ftello(file.GetStream()) >= kHeaderSize) return;
  Qov::Util::Raise(kMergeSource, Qov::Util::Exception::ErrorType::ReadError,
                   "\"" + file.GetPath() + "\" is too short for a view-point file");
}

void AddViewPoints(Tree& tree, const std::string& path) {
  Qov::Log::Trace(kMergeSource) << "Loading view points of \"" << path << "\" ...";
  QovJbf::JbFile file;
  file.OpenFile(path, "rb");
  CheckHeaderSize(file);
  // The magic is not looked at: view-point files with another one are about.
  const std::string version = file.ReadVersion();
  if (version != "0.1") {
    const FileVersionScope scope(version);
    tree.LoadViewPathVec(file);
  }
  file.CloseFile();
}

}  // namespace

int merge_as_instances(const std::vector<std::string>& files, const std::string& output,
                       bool /*appendFlag*/, bool useSuffix, bool autoRename) {
  return RunMergeStep([&] {
    RefuseOutputAmongInputs(files, output);
    MergeSummary summary;
    const InstanceNaming naming{useSuffix, autoRename};
    Tree master(false);
    LoadModel(master, files.at(0));
    summary.AddInput(files[0]);
    PartLinksMap links;
    Qov::Util::Concerning(files[0], [&] {
      Rename(master, 1, links, naming);
      GenerateLinkedResults(master, links, summary.GetDropped());
    });
    for (std::size_t i = 1; i < files.size(); ++i) {
      AddInstance(master, files[i], i + 1, naming, summary);
    }
    SaveModel(master, output);
    summary.Tell({"Merged ", files.size(), " files as instances"}, master, output);
    summary.WarnOfLostValues();
  });
}

int merge_as_datasets(const std::vector<std::string>& files, const std::string& output) {
  return RunMergeStep([&] {
    RefuseOutputAmongInputs(files, output);
    MergeSummary summary;
    for (const std::string& path : files) summary.AddInput(path);
    const std::unique_ptr<Tree> tree = MakeDatasetTree();
    LoadModel(*tree, files.at(0));
    for (std::size_t i = 1; i < files.size(); ++i) MergeModel(*tree, files[i]);
    SaveModel(*tree, output);
    summary.Tell({"Merged ", files.size(), " files as datasets"}, *tree, output);
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
    Tree tree(false);
    LoadModel(tree, model);
    for (const std::string& path : viewPointFiles) {
      summary.AddInput(path);
      Qov::Util::Concerning(path, [&] { AddViewPoints(tree, path); });
    }
    SaveModel(tree, output);
    summary.Tell({"Added the views of ", viewPointFiles.size(), " files"}, tree, output);
  });
}

int refuse_output_among_inputs(const std::vector<std::string>& inputs, const std::string& output) {
  return RunMergeStep([&] { RefuseOutputAmongInputs(inputs, output); });
}

}  // namespace QovRyx
