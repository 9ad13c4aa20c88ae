#include "InputLayout.h"
#include "MemoryFile.h"
#include "Models.h"
#include "Qov/Ryx/RyxMerge.h"
#include "Target.h"

/// Adds the views of a view-point file to a model.
namespace {

using namespace Qov::Fuzz;

void SaveEmptyModel(const std::string& path) {
  QovRyx::Tree tree(false);
  tree.Save(path, true, "", QovRyx::Tree::SupportedFileFormats::Ryx);
}

}  // namespace

const InputLayout Qov::Fuzz::kInputLayout{};

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static MemoryFile model;
  static MemoryFile views;
  static MemoryFile output;
  static const bool isSaved = (SaveEmptyModel(model.GetPath()), true);
  static_cast<void>(isSaved);
  views.SetContent(data, size);
  int status = 0;
  {
    const SilentErrors silence;
    status =
        QovRyx::merge_viewpoints_with_ryx(model.GetPath(), {views.GetPath()}, output.GetPath());
  }
  if (status != 0) return 0;
  QovRyx::Tree tree(false);
  Require(Accepts([&] { Load(tree, output.GetPath()); }), "a model with views can be loaded");
  return 0;
}
