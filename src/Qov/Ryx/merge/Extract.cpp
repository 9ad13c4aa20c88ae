#include "Qov/Ryx/Extract.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>

#include "MergeNotes.h"
#include "MergeSteps.h"
#include "Qov/Util/FileContext.h"
#include "RenameContent.h"
#include "Select.h"
#include "container/TemporaryOutput.h"
#include "model/HeavyPass.h"

namespace QovRyx {
namespace {

/// Edits the model as the request asks.
void Edit(Tree& tree, const ExtractRequest& request, ExtractReport& report, MergeNotes& notes) {
  const SelectionCounts selected = ApplySelection(tree, request.mSelection);
  report.mNodesLeftOut = selected.mNodesLeftOut;
  report.mResultsLeftOut = selected.mResultsLeftOut;
  report.mLinksReplaced = selected.mLinksReplaced;
  for (const std::string& note : selected.mNotes) notes.AddLine(note);
  const RenameCounts renamed = RenameContent(tree.GetNodes(), request);
  report.mNodesRenamed = renamed.mNodes;
  report.mResultsRenamed = renamed.mResults;
  if (renamed.mNodes + renamed.mResults != 0 && tree.HasViewPoints()) {
    notes.AddLine("The views are not changed: they may refer to old names");
  }
}

/// Raises WriteError if the disk has less room than half of the share `kept` of the input. Only
/// half is required, because the chosen arrays may compress better than the others.
void CheckRoomFor(const ExtractRequest& request, double kept) {
  std::error_code error;
  const auto size = static_cast<double>(std::filesystem::file_size(request.mInput, error));
  if (!error) QovJbf::CheckRoom(request.mOutput, static_cast<std::uint64_t>(size * kept / 2));
}

}  // namespace

ExtractReport Extract(const ExtractRequest& request) {
  CheckSettings(request.mSettings);
  std::optional<QovJbf::TemporaryOutput> output;
  if (!request.mDryRun) {
    QovJbf::CheckIsNotAnInput(request.mOutput, {request.mInput});
    output.emplace(request.mOutput, request.mSettings.mOverwrite);
  }
  ExtractReport report;
  MergeNotes notes;
  const std::unique_ptr<Tree> tree = MakeModelTree();
  LoadModel(*tree, request.mInput, Tree::ReadMode::Everything,
            [&notes](const std::string& line) { notes.AddLine(line); });
  notes.CountLosses(tree->GetLosses());
  const auto numBytesBefore = static_cast<double>(CountHeavyBytes(tree->GetNodes()));
  Edit(*tree, request, report, notes);
  const ContentCounts counts = CountContent(tree->GetNodes());
  report.mNodes = counts.mNodes;
  report.mResults = counts.mResults;
  report.mNotes = notes.GetLines();
  if (!output) return report;
  if (numBytesBefore > 0) {
    const auto numBytes = static_cast<double>(CountHeavyBytes(tree->GetNodes()));
    CheckRoomFor(request, numBytes / numBytesBefore);
  }
  Qov::Util::WithFileContext(request.mOutput, [&] {
    tree->Save(output->GetTemporaryPath(), "", request.mSettings);
    output->Commit();
  });
  return report;
}

}  // namespace QovRyx
