#include <fmt/format.h>

#include <CLI/App.hpp>
#include <algorithm>
#include <charconv>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Command.h"
#include "ErrorText.h"
#include "Plural.h"
#include "Qov/Util/Raise.h"
#include "SafeOutput.h"
#include "diagnostics/Printable.h"
#include "export/ExportContent.h"
#include "export/ExportFormat.h"
#include "export/ExportReport.h"
#include "ledger/MergeRequest.h"
#include "picture/ResultScalars.h"

namespace Qov::Tools {
namespace {

using ErrorType = Util::Exception::ErrorType;

constexpr const char* kSource = "tools/Export";
/// Notes that a run prints; --dry-run and --json have all of them.
constexpr std::size_t kMostNotes = 20;
/// Status if a chosen geometry or result cannot be written.
constexpr int kIncomplete = 1;

constexpr const char* kFooter =
    "The ending of OUT determines the format:\n"
    "  .vtu         one VTK grid of all chosen geometries\n"
    "  .vtm         VTK blocks, one for each geometry, in a folder beside it\n"
    "  .pvd         a .vtm for each step, with its time\n"
    "  .glb         the outer surface as glTF, coloured by --result\n"
    "  .stl, .ply   the outer surface\n"
    "  .csv         a table of points, or of cells\n"
    "  .npz         all arrays, for NumPy\n"
    "  .case        EnSight Gold\n"
    "Patterns have *, ? and [...]. Nodes can be given by their ids, steps by their numbers.\n"
    "Kinds of cells are vertex, points, line, triangle, quad, polygon, tetrahedron, pyramid,\n"
    "wedge, hexahedron, and quadratic-line to quadratic-hexahedron.\n"
    "\n"
    "Exit status: 0 all that was chosen is written, 1 some of it cannot be written, 2 failure.\n"
    "\n"
    "Example: ryx export plate.ryx -o plate.vtu\n"
    "         ryx export plate.ryx -o plate.csv --results Stress --steps LC2\n"
    "         ryx export assembly.ryx -o assembly.glb --nodes 'Panel*' --result Contact\n"
    "         ryx export merged.ryx -o merged.pvd --dry-run";

/// Reads "4=quad".
void AddKind(const std::string& text, QovMesh::KindChoices& kinds) {
  const std::size_t sign = text.find('=');
  std::size_t numNodes = 0;
  const char* end = text.data() + std::min(sign, text.size());
  const auto [stop, error] = std::from_chars(text.data(), end, numNodes);
  const auto kind =
      sign == text.npos ? std::nullopt : QovMesh::FindKind(std::string_view(text).substr(sign + 1));
  if (error != std::errc() || stop != end || !kind) {
    Util::Raise(kSource, ErrorType::InvalidEnumeration,
                "--cells takes a number of nodes and a kind, such as 4=quad, not " +
                    Util::Quote(text) + "; ryx export --help lists the kinds");
  }
  if (!QovMesh::CanHaveNodes(*kind, numNodes)) {
    Util::Raise(kSource, ErrorType::InvalidEnumeration,
                fmt::format("--cells {}: a cell of the kind {} cannot have {}", text,
                            QovMesh::GetShape(*kind).mName, Plural(numNodes, "node")));
  }
  if (!kinds.emplace(numNodes, *kind).second) {
    Util::Raise(kSource, ErrorType::InvalidEnumeration,
                fmt::format("--cells gives two kinds for {}", Plural(numNodes, "node")));
  }
}

/// Returns true if a model cannot be read because the file is a view-point file.
bool IsWithoutModel(const std::string& path, const std::exception& error) {
  const auto* raised = dynamic_cast<const Util::Exception*>(&error);
  return IsViewPointFile(path) && raised != nullptr &&
         raised->GetType() == ErrorType::ElementNotFound;
}

/// Removes all but the first of equal notes.
void RemoveRepeated(std::vector<std::string>& notes) {
  std::unordered_set<std::string> seen;
  std::erase_if(notes, [&](const std::string& note) { return !seen.insert(note).second; });
}

class ExportCommand : public Command {
 public:
  const char* GetName() const override { return "export"; }
  const char* GetSummary() const override { return "Write a model in another format"; }
  const char* GetFooter() const override { return kFooter; }
  void Declare(CLI::App& app) override;
  int Run(Output& output, Output& errors) override;

 private:
  int Export(Output& output, Output& errors);
  void CheckOptions(ExportFormat format) const;
  void Write(ExportReport& report);
  void Print(const ExportReport& report, Output& output, Output& errors) const;

  std::string mModel;
  std::string mOutputPath;
  ExportRequest mRequest;
  std::vector<std::string> mCells;
  std::string mResult;
  std::string mComponent = "magnitude";
  bool mNoSets = false;
  bool mDryRun = false;
  bool mOverwrite = false;
  bool mJson = false;
};

void ExportCommand::Declare(CLI::App& app) {
  const auto addPatterns = [&](const char* name, std::vector<std::string>& words,
                               const char* help) {
    return app.add_option(name, words, help)->type_name("PATTERN")->allow_extra_args(false);
  };
  app.add_option("MODEL", mModel, "Model file")->required();
  app.add_option("-o,--output", mOutputPath, "File to write; its ending determines the format")
      ->type_name("OUT")
      ->required();
  addPatterns("--nodes", mRequest.mNodes, "Only these nodes and their descendants");
  addPatterns("--results", mRequest.mResults, "Only these results");
  addPatterns("--steps", mRequest.mSteps, "Only these steps or load cases");
  CLI::Option* sets = addPatterns("--sets", mRequest.mSetNames, "Only these node sets");
  app.add_flag("--no-sets", mNoSets, "No node sets")->excludes(sets);
  app.add_option("--cells", mCells, "Kind of the cells with COUNT nodes")
      ->type_name("COUNT=KIND")
      ->allow_extra_args(false);
  app.add_option("--result", mResult, "Result that colours a .glb file")->type_name("NAME");
  app.add_option("--component", mComponent, "Its component: x, y, z, magnitude or a number")
      ->type_name("WHICH");
  app.add_flag("--dry-run", mDryRun, "Write nothing, and show what would be written and what not");
  app.add_flag("--overwrite", mOverwrite, "Replace existing files");
  app.add_flag("--json", mJson, "Print one JSON document");
}

void ExportCommand::CheckOptions(ExportFormat format) const {
  std::error_code error;
  if (std::filesystem::equivalent(mOutputPath, mModel, error)) {
    Util::Raise(kSource, ErrorType::MiscellaneousError,
                Util::Quote(mOutputPath) + " is the model itself; choose another output");
  }
  if (format != ExportFormat::Glb && !mResult.empty()) {
    Util::Raise(kSource, ErrorType::InvalidMethod,
                "--result is for .glb files; --results chooses the results of other formats");
  }
  ParseComponent(mComponent);
}

void ExportCommand::Write(ExportReport& report) {
  const ExportTask task{report.mTree, report.mContent, mRequest.mKinds, report.mNotes,
                        report.mResultsLeftOut};
  OutputSet outputs(mOverwrite, mDryRun);
  WriteExport(report.mFormat, task, {mResult, ParseComponent(mComponent)}, mOutputPath, outputs);
  outputs.CommitAll();
  RemoveRepeated(report.mNotes);
  report.mIsWritten = !mDryRun;
  report.mNumFiles = outputs.GetNumFiles();
  report.mNumBytes = outputs.GetNumBytes();
}

void ExportCommand::Print(const ExportReport& report, Output& output, Output& errors) const {
  if (mJson) return output.Line(FormatJson(ExportJson(report)));
  if (mDryRun) return PrintDetails(report, output);
  const auto& notes = report.mNotes;
  for (std::size_t i = 0; i < std::min(notes.size(), kMostNotes); ++i) {
    errors.Line("ryx export: " + notes[i]);
  }
  if (notes.size() > kMostNotes) {
    errors.Line(fmt::format("ryx export: and {}; --dry-run shows all",
                            Plural(notes.size() - kMostNotes, "further note")));
  }
  PrintSummary(report, output);
}

int ExportCommand::Run(Output& output, Output& errors) {
  try {
    return Export(output, errors);
  } catch (const std::exception& error) {
    errors.Line("ryx export: " + DescribeError(error, errors.GetStyle()));
    return kTrouble;
  }
}

int ExportCommand::Export(Output& output, Output& errors) {
  const ExportFormat format = FindExportFormat(mOutputPath);
  mRequest.mSets = !mNoSets;
  for (const std::string& text : mCells) AddKind(text, mRequest.mKinds);
  CheckOptions(format);
  QovRyx::Tree tree(false);
  try {
    QovRyx::Tree::IdMap ids;
    tree.Load(mModel, ids, QovRyx::Tree::ReadMode::WithoutViews,
              QovRyx::Tree::SupportedFileFormats::Ryx);
  } catch (const std::exception& error) {
    const TextStyle& style = errors.GetStyle();
    const std::string text = IsWithoutModel(mModel, error)
                                 ? "is a view-point file, which has no geometry; give a model"
                                 : FileErrorText(mModel, error);
    errors.Line(fmt::format("ryx export: {}: {}", Escape(mModel, style), Escape(text, style)));
    return kTrouble;
  }
  const ExportContent content = ChooseContent(tree, mRequest, GetStepLayout(format));
  ExportReport report{tree, content, format, mOutputPath, false, 0, 0, {}, content.mNotes};
  QovJbf::RemoveOutputsOnSignals();
  Write(report);
  Print(report, output, errors);
  return content.mIsComplete ? kSuccess : kIncomplete;
}

}  // namespace

std::unique_ptr<Command> MakeExportCommand() { return std::make_unique<ExportCommand>(); }

}  // namespace Qov::Tools
