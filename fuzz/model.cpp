#include "InputLayout.h"
#include "MemoryFile.h"
#include "Models.h"
#include "Target.h"

/// Loads a model and reads all its data. A sound model is unchanged after saving and loading.
namespace {

using namespace Qov::Fuzz;

void Save(QovRyx::Tree& tree, const std::string& path) {
  tree.Save(path, true, "", QovRyx::Tree::SupportedFileFormats::Ryx);
}

}  // namespace

const InputLayout Qov::Fuzz::kInputLayout{};

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static MemoryFile file;
  static MemoryFile copy;
  file.SetContent(data, size);
  QovRyx::Tree tree(false);
  if (!LoadWithArrays(tree, file.GetPath())) return 0;
  Require(Accepts([&] { Save(tree, copy.GetPath()); }), "a loaded model can be saved");
  QovRyx::Tree again(false);
  Require(Accepts([&] {
            Load(again, copy.GetPath());
            ReadArrays(again);
          }),
          "a saved model can be loaded");
  Require(Describe(again) == Describe(tree), "nothing is lost or changed");
  return 0;
}
