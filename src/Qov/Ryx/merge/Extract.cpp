#include "Qov/Ryx/Extract.h"

#include <memory>
#include <optional>
#include <string>

#include "MergeNotes.h"
#include "MergeSteps.h"
#include "Qov/Util/FileContext.h"
#include "RenameContent.h"
#include "Select.h"
#include "container/TemporaryOutput.h"

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

void CountContent(const NodeTree& nodes, ExtractReport& report) {
  for (const auto& [id, entry] : nodes) report.mNodes += entry.mData ? 1 : 0;
  ForEachGeometry(nodes, [&report](std::uint32_t, const Geometry& geometry) {
    report.mResults += geometry.GetVariables().size();
  });
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
  Edit(*tree, request, report, notes);
  CountContent(tree->GetNodes(), report);
  report.mNotes = notes.GetLines();
  if (!output) return report;
  Qov::Util::WithFileContext(request.mOutput, [&] {
    tree->Save(output->GetTemporaryPath(), "", request.mSettings);
    output->Commit();
  });
  return report;
}

}  // namespace QovRyx
