#include "MergeRequest.h"

#include <CLI/App.hpp>
#include <algorithm>

#include "Qov/Ryx/FileArrangement.h"

namespace Qov::Tools {
namespace {

MergeMode ChooseMode(const MergeOptions& options, std::size_t numModels, bool hasViewFiles) {
  if (numModels == 0) return MergeMode::Nothing;
  if (numModels == 1) return hasViewFiles ? MergeMode::ViewsOnly : MergeMode::Nothing;
  if (!options.mAsInstances) return MergeMode::Datasets;
  if (options.mSuffix) return MergeMode::SuffixedInstances;
  return options.mAutoRename ? MergeMode::AutomaticInstances : MergeMode::Instances;
}

}  // namespace

void DeclareMergeOptions(CLI::App& app, MergeOptions& options) {
  app.add_flag("--merge-as-instances", options.mAsInstances,
               "Append the results of all models to the first one");
  app.add_flag("--suffix-file-instance", options.mSuffix,
               "Put the number of the file into the names of all results");
  app.add_flag("--auto-rename-instances", options.mAutoRename,
               "Put it into the names that have an instance part, and take only those");
  app.add_flag("--arrange-files", options.mArrange, "Order the inputs by their trailing numbers");
}

const char* NameOf(MergeMode mode) {
  switch (mode) {
    case MergeMode::ViewsOnly:
      return "view points only";
    case MergeMode::Datasets:
      return "datasets";
    case MergeMode::Instances:
      return "instances";
    case MergeMode::SuffixedInstances:
      return "instances with file suffixes";
    case MergeMode::AutomaticInstances:
      return "instances renamed automatically";
    default:
      return "nothing";
  }
}

std::size_t MergeRequest::CountModels() const {
  return mInputs.size() -
         static_cast<std::size_t>(std::count_if(mInputs.begin(), mInputs.end(), IsViewPointFile));
}

bool IsViewPointFile(const std::string& path) { return path.ends_with(".vpt"); }

MergeRequest MakeMergeRequest(const MergeOptions& options, const std::vector<std::string>& inputs,
                              const std::string& output) {
  MergeRequest request;
  request.mInputs = options.mArrange ? QovRyx::arrange_files(inputs) : inputs;
  request.mOutput = output;
  const std::size_t numModels = request.CountModels();
  request.mMode = ChooseMode(options, numModels, numModels < inputs.size());
  return request;
}

}  // namespace Qov::Tools
