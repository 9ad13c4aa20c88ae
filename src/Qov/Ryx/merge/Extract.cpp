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

/// Returns the uncompressed bytes of all arrays.
double CountBytes(const NodeTree& nodes) {
  double numBytes = 0;
  ForEachGeometry(nodes, [&numBytes](std::uint32_t, const Geometry& geometry) {
    for (const Geometry::VarStruct& result : geometry.GetVariables()) {
      if (!result.mLink.IsLinked()) numBytes += static_cast<double>(result.mValues.GetSize());
    }
  });
  return numBytes;
}

/// Raises WriteError if the disk has much less room than the share `kept` of the input takes. Half
/// of that size is enough to begin, because arrays are compressed differently well.
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
  const double numBytesBefore = CountBytes(tree->GetNodes());
  Edit(*tree, request, report, notes);
  CountContent(tree->GetNodes(), report);
  report.mNotes = notes.GetLines();
  if (!output) return report;
  if (numBytesBefore > 0) CheckRoomFor(request, CountBytes(tree->GetNodes()) / numBytesBefore);
  Qov::Util::WithFileContext(request.mOutput, [&] {
    tree->Save(output->GetTemporaryPath(), "", request.mSettings);
    output->Commit();
  });
  return report;
}

}  // namespace QovRyx
