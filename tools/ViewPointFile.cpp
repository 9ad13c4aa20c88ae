#include "ViewPointFile.h"

namespace Qov::Tools {

void SaveViewPointFile(const QovRyx::Tree& tree, const std::string& path) {
  QovJbf::JbFile file;
  file.OpenFile(path, "wb+");
  file.WriteHeader();
  tree.SaveViewPathVec(file);
  file.GetIndex().WriteAllBuffersToFileStream(file.GetStream());
  file.CloseFile();
}

}  // namespace Qov::Tools
