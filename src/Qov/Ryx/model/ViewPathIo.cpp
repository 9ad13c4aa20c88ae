#include "ViewPathIo.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "ModelFormat.h"
#include "StreamNames.h"

// The stream "View Points":
//   current view: ViewPoint record
//   number of paths: i32          none if it is 0 or less
//   for each path:
//     name: string
//     number of views: i32        none if it is 0 or less
//     views: ViewPoint records
//   sequencer: SequencerData record

namespace QovRyx {
namespace {

std::int32_t RequireCount(QovJbf::JbFile& file) {
  std::int32_t count = 0;
  file.Require(kViewPoints, count);
  return count;
}

ViewPointPath RequireViewPointPath(QovJbf::JbFile& file) {
  ViewPointPath path;
  file.Require(kViewPoints, path.mName);
  for (std::int32_t left = RequireCount(file); left > 0; --left) {
    ViewPoint viewPoint;
    file.Require(kViewPoints, viewPoint);
    path.mViewPoints.push_back(std::move(viewPoint));
  }
  return path;
}

/// Reserves room for `count` more paths if the stream can hold them, so that the vector takes no
/// more memory than they need.
void ReservePaths(QovJbf::JbFile& file, std::int32_t count, std::vector<ViewPointPath>& paths) {
  const std::uint64_t most = file.OpenStreamReader(kViewPoints)->GetLength() / kLeastPathSize;
  if (count <= 0 || static_cast<std::uint64_t>(count) > most) return;
  const std::size_t needed = paths.size() + static_cast<std::size_t>(count);
  if (needed > paths.capacity()) paths.reserve(std::max(needed, paths.size() * 3 / 2));
}

void WritePath(QovJbf::Index& index, const ViewPointPath& path) {
  index.Put(kViewPoints, path.mName);
  index.Put(kViewPoints, static_cast<std::uint32_t>(path.mViewPoints.size()));
  for (const ViewPoint& viewPoint : path.mViewPoints) index.Put(kViewPoints, viewPoint);
}

}  // namespace

void ReadViewPaths(QovJbf::JbFile& file, Tree& tree) {
  ViewPoint viewPoint;
  file.Require(kViewPoints, viewPoint);
  tree.GetViewPoint() = std::move(viewPoint);
  std::int32_t numPaths = RequireCount(file);
  std::vector<ViewPointPath>& paths = tree.GetViewPointPaths();
  ReservePaths(file, numPaths, paths);
  for (; numPaths > 0; --numPaths) paths.push_back(RequireViewPointPath(file));
  SequencerData sequencerData;
  file.Require(kViewPoints, sequencerData);
  tree.GetSequencerData() = std::move(sequencerData);
}

void WriteViewPaths(QovJbf::JbFile& file, const Tree& tree) {
  QovJbf::Index& index = file.GetIndex();
  index.Put(kViewPoints, tree.GetViewPoint());
  index.Put(kViewPoints, static_cast<std::uint32_t>(tree.GetViewPointPaths().size()));
  for (const ViewPointPath& path : tree.GetViewPointPaths()) WritePath(index, path);
  index.Put(kViewPoints, tree.GetSequencerData());
}

}  // namespace QovRyx
