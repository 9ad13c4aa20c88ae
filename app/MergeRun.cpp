#include "MergeRun.h"

#include <boost/filesystem.hpp>
#include <iostream>
#include <stdexcept>

#include "Qov/Jbf/OutputLocks.h"
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

/// Fails as the copying of the merged model would, before a long merge takes the place of a file
/// that is there.
void CheckCopyIsNew(const std::string& output, const std::string& copy) {
  boost::system::error_code ignored;  // the copying will tell
  if (!boost::filesystem::exists(boost::filesystem::symlink_status(copy, ignored))) return;
  throw boost::filesystem::filesystem_error(
      "boost::filesystem::copy_file", output, copy,
      boost::system::errc::make_error_code(boost::system::errc::file_exists));
}

/// Leaves no half copy behind, which would be in the way of the next run.
void CopyToNewFile(const std::string& path, const std::string& copy) {
  try {
    boost::filesystem::copy_file(path, copy, boost::filesystem::copy_options::none);
  } catch (const boost::filesystem::filesystem_error& error) {
    boost::system::error_code ignored;
    const bool isOurs = error.code() != boost::system::errc::file_exists;
    if (isOurs) boost::filesystem::remove(copy, ignored);
    throw;
  }
}

/// A tree reads its arrays from its file until it is saved, so the merged model is read back from
/// a copy, which stays behind.
int MergeWithViewPoints(const CommandLine& commandLine, const InputLists& inputs) {
  const std::string& output = commandLine.mOutput;
  const std::string copy = output + ".temp";
  CheckCopyIsNew(output, copy);
  const QovJbf::OutputLocks locks;  // nobody else writes the output between its two saves
  int status = QovRyx::refuse_output_among_inputs(inputs.mViewPointFiles, output);
  if (status == 0) status = MergeModels(commandLine, inputs.mModels);
  if (status != 0) throw std::runtime_error("The merge failed; no view points were added");
  CopyToNewFile(output, copy);
  return QovRyx::merge_viewpoints_with_ryx(copy, inputs.mViewPointFiles, output);
}

int AddViewPointsToOne(const CommandLine& commandLine, const InputLists& inputs) {
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
  if (inputs.mModels.size() == 1) return AddViewPointsToOne(commandLine, inputs);
  return inputs.mViewPointFiles.empty() ? MergeModels(commandLine, inputs.mModels)
                                        : MergeWithViewPoints(commandLine, inputs);
}
