#include "MergeRun.h"

#include <boost/filesystem.hpp>
#include <iostream>
#include <stdexcept>

#include "Qov/Ryx/FileArrangement.h"
#include "Qov/Ryx/RyxMerge.h"

namespace {

constexpr int kNoModels = 4;

InputLists OrderInputs(const CommandLine& commandLine) {
  if (!commandLine.Has("--arrange-files")) return SplitInputs(commandLine.mInputs);
  return SplitInputs(QovRyx::arrange_files(commandLine.mInputs));
}

int MergeModels(const CommandLine& commandLine, const std::vector<std::string>& models) {
  const std::string& output = commandLine.mOutput;
  if (!commandLine.Has("--merge-as-instances")) return QovRyx::merge_as_datasets(models, output);
  if (commandLine.Has("--suffix-file-instance")) {
    return QovRyx::merge_as_instances(models, output, false, true, false);
  }
  const bool autoRename = commandLine.Has("--auto-rename-instances");
  return QovRyx::merge_as_instances(models, output, true, autoRename, autoRename);
}

/// A tree reads its arrays from its file until it is saved, so the merged model is read back from
/// a copy, which stays behind.
int AddViewPointsToMerged(const std::vector<std::string>& viewPointFiles,
                          const std::string& output) {
  const std::string copy = output + ".temp";
  boost::filesystem::copy_file(output, copy, boost::filesystem::copy_options::none);
  return QovRyx::merge_viewpoints_with_ryx(copy, viewPointFiles, output);
}

int MergeAll(const CommandLine& commandLine, const InputLists& inputs) {
  const std::string& output = commandLine.mOutput;
  int status = QovRyx::refuse_output_among_inputs(inputs.mViewPointFiles, output);
  if (status == 0) status = MergeModels(commandLine, inputs.mModels);
  if (inputs.mViewPointFiles.empty()) return status;
  if (status != 0) throw std::runtime_error("The merge failed; no view points were added");
  return AddViewPointsToMerged(inputs.mViewPointFiles, output);
}

int AddViewPointsToOne(const CommandLine& commandLine, const InputLists& inputs) {
  if (inputs.mViewPointFiles.empty()) return 0;
  return QovRyx::merge_viewpoints_with_ryx(inputs.mModels.front(), inputs.mViewPointFiles,
                                           commandLine.mOutput);
}

}  // namespace

int RunMerge(const CommandLine& commandLine) {
  const InputLists inputs = OrderInputs(commandLine);
  if (inputs.mModels.empty()) {
    std::cerr << "No Ryx files found. " << std::endl;
    return kNoModels;
  }
  return inputs.mModels.size() == 1 ? AddViewPointsToOne(commandLine, inputs)
                                    : MergeAll(commandLine, inputs);
}
