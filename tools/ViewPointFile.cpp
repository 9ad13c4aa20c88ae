#include "ViewPointFile.h"

#include "Qov/Ryx/StreamNames.h"

// The stream of the views: the current view, u32 count of paths, and for each path its name, u32
// count of views and the views; then the sequencer.

namespace Qov::Tools {

void SaveViewPointFile(const QovRyx::Tree& tree, const std::string& path) {
  using QovRyx::kViewPoints;
  QovJbf::JbFile file;
  file.OpenFile(path, "wb+");
  file.WriteHeader();
  QovJbf::Index& index = file.GetIndex();
  index.Put(kViewPoints, tree.GetViewPoint());
  index.Put(kViewPoints, static_cast<std::uint32_t>(tree.GetViewPointPaths().size()));
  for (const QovRyx::ViewPointPath& views : tree.GetViewPointPaths()) {
    index.Put(kViewPoints, views.mName);
    index.Put(kViewPoints, static_cast<std::uint32_t>(views.mViewPoints.size()));
    for (const QovRyx::ViewPoint& view : views.mViewPoints) index.Put(kViewPoints, view);
  }
  index.Put(kViewPoints, tree.GetSequencerData());
  file.AddBlockTransformation(kViewPoints, QovJbf::BlockFlag::kCompressed);
  index.WriteAllBuffersToFileStream(file.GetStream());
  file.CloseFile();
}

}  // namespace Qov::Tools
