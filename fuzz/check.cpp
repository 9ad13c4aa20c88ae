#include "InputLayout.h"
#include "MemoryFile.h"
#include "Models.h"
#include "Target.h"
#include "check/FileCheck.h"

/// Checks a file. A model without findings can be loaded.
namespace {

using namespace Qov::Fuzz;

constexpr std::size_t kFindingsOfAKind = 20;

}  // namespace

const InputLayout Qov::Fuzz::kInputLayout{};

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static MemoryFile file;
  file.SetContent(data, size);
  Qov::Tools::FileReport report(kFindingsOfAKind);
  if (!Accepts([&] { Qov::Tools::CheckFile(file.GetPath(), report); })) return 0;
  for (const auto& finding : report.mFindings.GetKept()) {
    Require(!finding.mText.empty(), "every finding has a text");
  }
  if (report.mKind != Qov::Tools::FileReport::Kind::Model) return 0;
  if (report.mFindings.GetNumErrors() != 0) return 0;
  QovRyx::Tree tree(false);
  Require(Accepts([&] {
            Load(tree, file.GetPath());
            ReadArrays(tree);
          }),
          "a model without findings can be read");
  return 0;
}
