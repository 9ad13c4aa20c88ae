#include "InputLayout.h"
#include "MemoryFile.h"
#include "Models.h"
#include "Target.h"
#include "diff/ModelDiff.h"

/// Compares two models, and the first one with itself. The input is a FilePair (Models.h).
namespace {

using namespace Qov::Fuzz;

/// Loads a model into `tree`. Returns false if that fails or if its arrays take too much memory.
bool LoadSmall(QovRyx::Tree& tree, const MemoryFile& file) {
  bool isSmall = false;
  return Accepts([&] {
           Load(tree, file.GetPath());
           isSmall = ReadArrays(tree);
         }) &&
         isSmall;
}

}  // namespace

const InputLayout Qov::Fuzz::kInputLayout{.mIsPair = true};

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static MemoryFile first;
  static MemoryFile second;
  const FilePair pair = SplitPair({data, size});
  first.SetContent(pair.mFirst.data(), pair.mFirst.size());
  second.SetContent(pair.mSecond.data(), pair.mSecond.size());
  QovRyx::Tree a(false);
  if (!LoadSmall(a, first)) return 0;
  QovRyx::Tree again(false);
  Load(again, first.GetPath());
  const Qov::Tools::DiffOptions options;
  Require(DiffModels(a, again, options).mDifferences.empty(),
          "a model does not differ from itself");
  QovRyx::Tree b(false);
  if (LoadSmall(b, second)) DiffModels(a, b, options);
  return 0;
}
