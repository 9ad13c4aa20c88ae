#include "MergeRun.h"

#include <boost/filesystem.hpp>
#include <iostream>
#include <stdexcept>

#include "Qov/Jbf/OutputLocks.h"
#include "Qov/Ryx/FileArrangement.h"
#include "Qov/Ryx/RyxMerge.h"
#include "diagnostics/Printable.h"

namespace {

using Qov::Util::Quote;

constexpr int kNoModels = 4;

InputLists OrderInputs(const CommandLine& commandLine) {
  if (!commandLine.mOptions.mArrange) return SplitInputs(commandLine.mInputs);
  return SplitInputs(QovRyx::arrange_files(commandLine.mInputs));
}

int MergeModels(const CommandLine& commandLine, const std::vector<std::string>& models) {
  const auto naming = commandLine.mOptions.GetNaming();
  return naming ? QovRyx::merge_as_instances(models, commandLine.mOutput, *naming)
                : QovRyx::merge_as_datasets(models, commandLine.mOutput);
}

/// Throws the error that the merged model cannot be copied to `copy`.
[[noreturn]] void ThrowCopyError(const std::string& path, const std::string& copy,
                                 const boost::system::error_code& error) {
  if (error == boost::system::errc::file_exists) {
    throw std::runtime_error(Quote(copy) + " is left from an earlier run: remove it first");
  }
  throw std::runtime_error("cannot copy " + Quote(path) + " to " + Quote(copy) + ": " +
                           error.message());
}

/// Throws before the merge starts if the copy would fail after it, because a merge can take long.
void CheckCopyIsNew(const std::string& output, const std::string& copy) {
  boost::system::error_code error;
  const auto status = boost::filesystem::symlink_status(copy, error);
  if (status.type() == boost::filesystem::file_not_found) return;
  if (boost::filesystem::exists(status)) {
    error = boost::system::errc::make_error_code(boost::system::errc::file_exists);
  }
  ThrowCopyError(output, copy, error);
}

/// Copies the file. Removes an incomplete copy, because the next run would refuse it.
void CopyToNewFile(const std::string& path, const std::string& copy) {
  boost::system::error_code error;
  boost::filesystem::copy_file(path, copy, boost::filesystem::copy_options::none, error);
  if (!error) return;
  boost::system::error_code ignored;
  if (error != boost::system::errc::file_exists) boost::filesystem::remove(copy, ignored);
  ThrowCopyError(path, copy, error);
}

/// Merges the models, and adds the view points to a copy of the result, because a tree reads its
/// arrays from its file until it is saved. The copy is not deleted.
int MergeWithViewPoints(const CommandLine& commandLine, const InputLists& inputs) {
  const std::string& output = commandLine.mOutput;
  const std::string copy = output + ".temp";
  const int status = QovRyx::check_before_merge(commandLine.mInputs, {}, copy);
  if (status != 0) return status;
  CheckCopyIsNew(output, copy);
  const QovJbf::OutputLocks locks;  // no other run writes the output between its two saves
  if (MergeModels(commandLine, inputs.mModels) != 0) {
    throw std::runtime_error("The merge failed; no view points were added");
  }
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
  int status = QovRyx::check_before_merge(commandLine.mInputs, {}, commandLine.mOutput);
  if (status != 0) return status;
  if (inputs.mModels.empty()) {
    std::cerr << "No Ryx files found. " << std::endl;
    return kNoModels;
  }
  status = QovRyx::check_before_merge({}, inputs.mViewPointFiles, commandLine.mOutput);
  if (status != 0) return status;
  if (inputs.mModels.size() == 1) return AddViewPointsToOne(commandLine, inputs);
  return inputs.mViewPointFiles.empty() ? MergeModels(commandLine, inputs.mModels)
                                        : MergeWithViewPoints(commandLine, inputs);
}
