#include "MergeRequest.h"

#include <CLI/App.hpp>
#include <algorithm>

#include "Qov/Ryx/FileArrangement.h"

namespace Qov::Tools {
namespace {

MergeMode ChooseMode(const MergeOptions& options, std::size_t numModels, bool hasViewFiles) {
  if (numModels == 0 || (numModels == 1 && !hasViewFiles)) return {};
  if (numModels == 1) return {MergeKind::ViewsOnly, std::nullopt, std::nullopt};
  const auto naming = options.GetNaming();
  return {naming ? MergeKind::Instances : MergeKind::Datasets, naming, std::nullopt};
}

/// Returns the name of an instance merge of `ryx merge`.
const char* NameOf(QovRyx::MergedNames names) {
  switch (names) {
    case QovRyx::MergedNames::Stem:
      return "instances named after their files";
    case QovRyx::MergedNames::Number:
      return "instances named by number";
    default:
      return "instances that keep their names";
  }
}

}  // namespace

void DeclareMergeOptions(CLI::App& app, MergeOptions& options) {
  for (const MergeOption& option : kMergeOptions) {
    app.add_flag(option.mName, options.*option.mpFlag, option.mText);
  }
}

const char* NameOf(const MergeMode& mode) {
  switch (mode.mKind) {
    case MergeKind::ViewsOnly:
      return "view points only";
    case MergeKind::Datasets:
      return "datasets";
    case MergeKind::Instances:
      return mode.mNaming ? Qov::NameOf(*mode.mNaming) : NameOf(*mode.mNames);
    case MergeKind::Nothing:
      break;
  }
  return "nothing";
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
