#include "MergeRequest.h"

#include <CLI/App.hpp>
#include <algorithm>
#include <optional>

#include "Qov/Ryx/FileArrangement.h"

namespace Qov::Tools {
namespace {

MergeMode ChooseMode(std::optional<QovRyx::InstanceNaming> naming) {
  using QovRyx::InstanceNaming;
  if (!naming) return MergeMode::Datasets;
  switch (*naming) {
    case InstanceNaming::Plain:
      return MergeMode::Instances;
    case InstanceNaming::FileSuffix:
      return MergeMode::SuffixedInstances;
    case InstanceNaming::AutomaticSuffix:
      return MergeMode::AutomaticInstances;
    case InstanceNaming::AutomaticWithoutSuffix:
      break;  // no option chooses it
  }
  return MergeMode::Nothing;
}

MergeMode ChooseMode(const MergeOptions& options, std::size_t numModels, bool hasViewFiles) {
  if (numModels == 0) return MergeMode::Nothing;
  if (numModels == 1) return hasViewFiles ? MergeMode::ViewsOnly : MergeMode::Nothing;
  return ChooseMode(options.GetNaming());
}

}  // namespace

void DeclareMergeOptions(CLI::App& app, MergeOptions& options) {
  for (const MergeOption& option : kMergeOptions) {
    app.add_flag(option.mName, options.*option.mpFlag, option.mText);
  }
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
