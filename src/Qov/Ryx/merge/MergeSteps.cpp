#include "MergeSteps.h"

#include <sys/stat.h>

#include <utility>

#include "Qov/Log/Record.h"
#include "Qov/Util/Raise.h"
#include "diagnostics/Printable.h"

namespace QovRyx {
namespace {

bool IsSameFile(const struct stat& left, const struct stat& right) {
  return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

}  // namespace

void ReportCircumstances(const std::exception& error) {
  const auto* concerns = dynamic_cast<const Qov::Util::FileContext*>(&error);
  if (concerns == nullptr) return;
  const std::string& cause = concerns->GetCause();
  const std::string& path = concerns->GetFilePath();
  if (!cause.empty()) std::cerr << "The cause was: " << cause << std::endl;
  if (!path.empty()) std::cerr << "The file was " << Qov::Util::Quote(path) << "." << std::endl;
}

void RefuseOutputAmongInputs(const std::vector<std::string>& inputs, const std::string& output) {
  struct stat target {};
  if (::stat(output.c_str(), &target) != 0) return;
  for (const std::string& input : inputs) {
    struct stat source {};
    if (::stat(input.c_str(), &source) != 0 || !IsSameFile(source, target)) continue;
    Qov::Util::Raise(kMergeSource, Qov::Util::Exception::ErrorType::MiscellaneousError,
                     "Output file " + Qov::Util::Quote(output) + " is also an input");
  }
}

void ReportLeftOut(const std::string& line) {
  Qov::Log::Trace(kMergeSource) << line;
  std::cerr << line << std::endl;
}

void ReportUnknownStreams(const std::string& path, const std::vector<std::string>& streams,
                          const Reporter& report) {
  constexpr std::size_t kMostNames = 8;
  if (streams.empty()) return;
  const std::string number = std::to_string(streams.size());
  std::string line = Qov::Util::Quote(path) + ": " + number +
                     (streams.size() == 1 ? " stream of unknown name is left out: "
                                          : " streams of unknown names are left out: ");
  for (std::size_t i = 0; i < streams.size() && i < kMostNames; ++i) {
    line += (i == 0 ? "" : ", ") + Qov::Util::Quote(streams[i]);
  }
  if (streams.size() > kMostNames) line += ", ...";
  report(line);
}

namespace {

void ReportUnread(const std::string& path, const Tree& tree, const Reporter& report) {
  ReportUnknownStreams(path, tree.GetUnknownStreams(), report);
  const UnreadContent& unread = tree.GetUnreadContent();
  if (unread.mCount == 0) return;
  std::string line = Qov::Util::Quote(path) + ": left out, because it cannot be read: ";
  for (std::size_t i = 0; i < unread.mExamples.size(); ++i) {
    line += (i == 0 ? "" : ", ") + unread.mExamples[i];
  }
  const std::uint64_t more = unread.mCount - unread.mExamples.size();
  if (more != 0) line += " and " + std::to_string(more) + " more";
  report(line);
}

}  // namespace

void LoadModel(Tree& tree, const std::string& path, Tree::ReadMode mode, const Reporter& report) {
  Qov::Log::Trace(kMergeSource) << "Loading " << Qov::Util::Quote(path) << " ...";
  Tree::IdMap idMap;
  tree.Load(path, idMap, mode, Tree::SupportedFileFormats::Ryx);
  ReportUnread(path, tree, report);
}

void MergeModel(Tree& tree, const std::string& path, const Reporter& report) {
  Qov::Log::Trace(kMergeSource) << "Merging " << Qov::Util::Quote(path) << " ...";
  tree.Merge(path, Tree::ReadMode::WithoutViews, Tree::SupportedFileFormats::Ryx);
  ReportUnread(path, tree, report);
}

ContentCounts CountContent(const NodeTree& nodes) {
  ContentCounts counts;
  counts.mNodes = nodes.GetSize();
  ForEachGeometry(nodes, [&counts](std::uint32_t, const Geometry& geometry) {
    ++counts.mGeometries;
    counts.mResults += geometry.GetVariables().size();
  });
  return counts;
}

void SaveModel(Tree& tree, const std::string& output) {
  Qov::Log::Trace(kMergeSource) << "Saving " << Qov::Util::Quote(output) << " ...";
  Qov::Util::WithFileContext(output,
                             [&] { tree.Save(output, true, "", Tree::SupportedFileFormats::Ryx); });
}

std::unique_ptr<Tree> MakeModelTree() {
  return std::make_unique<Tree>("RyxMerge", "2017 R1", false);
}

std::unique_ptr<Tree> MakeDatasetTree() {
  std::unique_ptr<Tree> tree = MakeModelTree();
  auto group = std::make_unique<Group>(kMergeGroup);
  group->mTakesModels = 1;
  tree->GetNodes().GetCurrentNode().mData = std::move(group);
  return tree;
}

}  // namespace QovRyx
