#include "ViewPointFiles.h"

#include <sys/types.h>

#include <cstdio>
#include <iterator>
#include <utility>
#include <vector>

#include "Qov/Log/Record.h"
#include "Qov/Util/Raise.h"
#include "container/ContainerFormat.h"
#include "diagnostics/Printable.h"
#include "model/StreamNames.h"
#include "records/FileVersionScope.h"

namespace QovRyx {
namespace {

/// Raises ReadError for a file that is shorter than a header.
void CheckHeaderSize(const QovJbf::JbFile& file) {
  ::fseeko(file.GetStream(), 0, SEEK_END);
  if (::ftello(file.GetStream()) >= off_t{QovJbf::kHeaderSize}) return;
  Qov::Util::Raise(kMergeSource, Qov::Util::Exception::ErrorType::ReadError,
                   Qov::Util::Quote(file.GetPath()) + " is too short for a view-point file");
}

/// Returns the version of the file. Ignores the magic, because view-point files with other magics
/// exist.
std::string OpenViewPointFile(QovJbf::JbFile& file, const std::string& path) {
  file.OpenFile(path, "rb");
  CheckHeaderSize(file);
  return file.ReadVersion();
}

}  // namespace

void CheckViewPointFile(const std::string& path) {
  QovJbf::JbFile file;
  const std::string version = OpenViewPointFile(file, path);
  if (!QovJbf::HasViews(version)) return;
  const FileVersionScope scope(version);
  file.ReadIndex();
  Tree views(false);
  views.LoadViewPathVec(file);
}

bool AddViewPoints(Tree& tree, const std::string& path, const Reporter& report) {
  const auto reportNone = [&](const std::string& reason) {
    report(Qov::Util::Quote(path) + ": no views are taken: " + reason);
  };
  Qov::Log::Trace(kMergeSource) << "Loading view points of " << Qov::Util::Quote(path) << " ...";
  const bool hadViews = tree.HasViewPoints();
  bool hasViews = false;
  QovJbf::JbFile file;
  const std::string version = OpenViewPointFile(file, path);
  if (QovJbf::HasViews(version)) {
    const FileVersionScope scope(version);
    tree.LoadViewPathVec(file);
    ReportUnknownStreams(path, FindUnknownStreams(file.GetIndex().GetItems()), report);
    hasViews = file.HasStream(kViewPoints);
    if (!hasViews) reportNone("the file holds none");
  } else {
    reportNone("files of version 0.1 hold none that can be read");
  }
  file.CloseFile();
  return hadViews && hasViews;
}

bool AppendViewPaths(Tree& tree, const std::string& path) {
  QovJbf::JbFile file;
  const std::string version = OpenViewPointFile(file, path);
  if (!QovJbf::HasViews(version)) return true;
  const FileVersionScope scope(version);
  file.ReadIndex();
  if (!file.HasStream(kViewPoints)) return true;
  Tree views(false);
  views.LoadViewPathVec(file);
  std::vector<ViewPointPath>& paths = tree.GetViewPointPaths();
  std::move(views.GetViewPointPaths().begin(), views.GetViewPointPaths().end(),
            std::back_inserter(paths));
  if (tree.HasViewPoints()) return false;
  tree.GetViewPoint() = std::move(views.GetViewPoint());
  tree.GetSequencerData() = std::move(views.GetSequencerData());
  tree.SetHasViewPoints(true);
  return true;
}

}  // namespace QovRyx
