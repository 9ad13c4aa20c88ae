#include "ModelInput.h"

#include "Qov/Ryx/FileVersionScope.h"
#include "Qov/Ryx/StreamNames.h"
#include "Qov/Util/Raise.h"

namespace Qov::Tools {
namespace {

using QovRyx::Tree;

/// The oldest files have no views that could be read.
constexpr const char* kVersionWithoutViews = "0.1";

/// Reads the views if the file holds nothing else; tells whether that was so.
bool LoadViewsOnly(QovJbf::JbFile& file, Tree& tree) {
  if (!file.IsJbFile()) return false;
  const std::string version = file.ReadVersion();
  bool isCurrent = false;
  QovJbf::JbFile::CheckSupport(version, isCurrent);
  file.ReadIndex();
  if (file.HasStream(QovRyx::kRyxTree)) return false;
  if (!file.HasStream(QovRyx::kViewPoints) || version == kVersionWithoutViews) {
    Util::Raise("tools/ModelInput", Util::Exception::ErrorType::FormatNotSupported,
                "holds neither a model nor view points");
  }
  const QovRyx::FileVersionScope scope(version);
  tree.LoadViewPathVec(file);
  return true;
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

}  // namespace Qov::Tools
