#include "ModelInput.h"

#include <fmt/format.h>

#include <exception>

#include "ErrorText.h"
#include "Qov/Util/Raise.h"
#include "check/Container.h"
#include "container/ContainerFormat.h"
#include "model/StreamNames.h"
#include "records/FileVersionScope.h"

namespace Qov::Tools {
namespace {

using QovRyx::Tree;

[[noreturn]] void Refuse(const char* text) {
  Util::Raise("tools/ModelInput", Util::Exception::ErrorType::FormatNotSupported, text);
}

/// Reads the views if the file contains nothing else. Returns true if so.
bool LoadViewsOnly(QovJbf::JbFile& file, Tree& tree) {
  if (!file.IsJbFile()) return false;
  const std::string version = file.ReadVersion();
  bool isCurrent = false;
  QovJbf::JbFile::CheckSupport(version, isCurrent);
  file.ReadIndex();
  if (file.HasStream(QovRyx::kRyxTree)) return false;
  if (!file.HasStream(QovRyx::kViewPoints)) Refuse("contains neither a model nor view points");
  if (!QovJbf::HasViews(version)) Refuse("view points of version 0.1 are not read");
  const QovRyx::FileVersionScope scope(version);
  tree.LoadViewPathVec(file);
  return true;
}

/// Returns the place where reading stopped, derived from the content of the tree.
std::string DescribeProgress(QovJbf::JbFile& file, const Tree& tree) {
  std::int32_t count = 0;
  file.Get(QovRyx::kRyxTree, count);
  const std::size_t numRead = HoldsNodes(tree) ? tree.GetNodes().GetSize() : 0;
  if (count > 0 && numRead < static_cast<std::size_t>(count)) {
    return fmt::format(" (stopped after {} of {} nodes)", numRead, count);
  }
  if (file.HasStream(QovRyx::kGlobalInformation) && tree.GetModifiers().empty()) {
    return " (in the history)";
  }
  const bool lacksViews = file.HasStream(QovRyx::kViewPoints) && !tree.HasViewPoints();
  return lacksViews ? " (in the view points)" : "";
}

/// Calls `read` and ignores its error, because an earlier one is reported.
template <class Read>
void Try(Read read) {
  try {
    read();
  } catch (const std::exception&) {
  }
}

/// Reads the parts after the one that could not be read. Returns the place of that part, if known.
std::string Salvage(const std::string& path, Tree& tree) {
  std::string progress;
  if (!HoldsNodes(tree)) {
    Try([&] { tree.Merge(path, Tree::ReadMode::Everything, Tree::SupportedFileFormats::Ryx); });
  }
  Try([&] {
    QovJbf::JbFile file;
    file.OpenFile(path, "rb");
    file.ReadIndex();
    Try([&] { progress = DescribeProgress(file, tree); });
    const std::string version = file.ReadVersion();
    if (tree.HasViewPoints() || !QovJbf::HasViews(version)) return;
    tree.GetViewPointPaths().clear();
    const QovRyx::FileVersionScope scope(version);
    tree.LoadViewPathVec(file);
  });
  return progress;
}

}  // namespace

void LoadModelOrViews(const std::string& path, Tree& tree) {
  QovJbf::JbFile file;
  file.OpenFile(path, "rb");
  const bool viewsOnly = LoadViewsOnly(file, tree);
  file.CloseFile();
  if (viewsOnly) return;
  Tree::IdMap ids;
  tree.Load(path, ids, Tree::ReadMode::Everything, Tree::SupportedFileFormats::Ryx);
}

std::string LoadWhatCanBeRead(const std::string& path, Tree& tree) {
  try {
    LoadModelOrViews(path, tree);
    return "";
  } catch (const std::exception& error) {
    const std::string text = FileErrorText(path, error) + Salvage(path, tree);
    return Container::IsUnfinished(path)
               ? "unfinished file, because its save was interrupted: " + text
               : text;
  }
}

bool HoldsNodes(const Tree& tree) {
  return tree.GetNodes().GetSize() > 1 || tree.GetNodes().begin()->second.mData;
}

bool HoldsAnything(const Tree& tree) {
  return HoldsNodes(tree) || tree.HasViewPoints() || !tree.GetModifiers().empty();
}

}  // namespace Qov::Tools
