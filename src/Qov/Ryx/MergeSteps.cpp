#include "MergeSteps.h"

#include <sys/stat.h>

#include <utility>

#include "Qov/Log/Record.h"
#include "Qov/Util/Raise.h"

namespace QovRyx {
namespace {

bool IsSameFile(const struct stat& left, const struct stat& right) {
  return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

}  // namespace

void ReportConcernedFile(const std::exception& error) {
  const auto* concerns = dynamic_cast<const Qov::Util::ConcernsFile*>(&error);
  if (concerns == nullptr || concerns->GetConcernedFile().empty()) return;
  std::cerr << "The file was \"" << concerns->GetConcernedFile() << "\"." << std::endl;
}

void RefuseOutputAmongInputs(const std::vector<std::string>& inputs, const std::string& output) {
  struct stat target {};
  if (::stat(output.c_str(), &target) != 0) return;
  for (const std::string& input : inputs) {
    struct stat source {};
    if (::stat(input.c_str(), &source) != 0 || !IsSameFile(source, target)) continue;
    Qov::Util::Raise(kMergeSource, Qov::Util::Exception::ErrorType::MiscellaneousError,
                     "Output file \"" + output + "\" is also an input");
  }
}

void LoadModel(Tree& tree, const std::string& path) {
  Qov::Log::Trace(kMergeSource) << "Loading \"" << path << "\" ...";
  Tree::IdMap idMap;
  tree.Load(path, idMap, Tree::ReadMode::Everything, Tree::SupportedFileFormats::Ryx);
}

void MergeModel(Tree& tree, const std::string& path) {
  Qov::Log::Trace(kMergeSource) << "Merging \"" << path << "\" ...";
  tree.Merge(path, Tree::ReadMode::Everything, Tree::SupportedFileFormats::Ryx);
}

void SaveModel(Tree& tree, const std::string& output) {
  Qov::Log::Trace(kMergeSource) << "Saving \"" << output << "\" ...";
  Qov::Util::Concerning(output,
                        [&] { tree.Save(output, true, "", Tree::SupportedFileFormats::Ryx); });
}

std::unique_ptr<Tree> MakeDatasetTree() {
  auto tree = std::make_unique<Tree>("RyxMerge", "2017 R1", false);
  auto group = std::make_unique<Group>("Merge");
  group->mTakesModels = 1;
  tree->GetNodes().GetCurrentNode().mData = std::move(group);
  return tree;
}

}  // namespace QovRyx
