#include <fmt/format.h>

#include <CLI/App.hpp>
#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Command.h"
#include "OptionValues.h"
#include "diagnostics/Printable.h"
#include "Qov/Util/Raise.h"
#include "SafeOutput.h"
#include "Terminal.h"
#include "TextTable.h"
#include "export/EnsightWriter.h"
#include "export/ExportContent.h"
#include "export/GlbWriter.h"
#include "export/SurfaceWriters.h"
#include "export/TableWriters.h"
#include "export/VtmWriter.h"
#include "export/VtuWriter.h"

namespace Qov::Tools {
namespace {

using ErrorType = Util::Exception::ErrorType;

constexpr const char* kSource = "tools/Export";

constexpr const char* kFooter =
    "The ending of OUT decides on the format:\n"
    "  .vtu   one VTK grid of all chosen geometries\n"
    "  .vtm   VTK blocks, one for each geometry, in a folder beside it\n"
    "  .pvd   a .vtm for each step, with its time\n"
    "  .glb   the outer surface as glTF, coloured by --result\n"
    "  .stl   .ply   the outer surface\n"
    "  .csv   a table of points, or of cells\n"
    "  .npz   all arrays, for NumPy\n"
    "  .case  EnSight Gold\n"
    "Patterns know *, ? and [...]; nodes and steps may be given by their numbers.\n"
    "\n"
    "Example: ryx export plate.ryx -o plate.vtu\n"
    "         ryx export plate.ryx -o plate.csv --results Stress --steps LC2\n"
    "         ryx export assembly.ryx -o assembly.glb --nodes 'Panel*' --result Contact\n"
    "         ryx export merged.ryx -o merged.pvd --dry-run";

enum class Format { Vtu, Vtm, Pvd, Glb, Stl, Ply, Csv, Npz, Case };

constexpr std::array<std::pair<const char*, Format>, 9> kEndings = {{{".vtu", Format::Vtu},
                                                                     {".vtm", Format::Vtm},
                                                                     {".pvd", Format::Pvd},
                                                                     {".glb", Format::Glb},
                                                                     {".stl", Format::Stl},
                                                                     {".ply", Format::Ply},
                                                                     {".csv", Format::Csv},
                                                                     {".npz", Format::Npz},
                                                                     {".case", Format::Case}}};

Format FormatOf(const std::string& path) {
  for (const auto& [ending, format] : kEndings) {
    if (std::filesystem::path(path).extension() == ending) return format;
  }
  std::string known;
  for (const auto& [ending, format] : kEndings) known += std::string(" ") + ending;
  Util::Raise(kSource, ErrorType::FormatNotSupported,
              Util::Quote(path) + " has no ending that decides on a format:" + known);
}

/// Reads "4=quad".
void AddKind(const std::string& text, QovMesh::KindChoices& kinds) {
  const std::size_t sign = text.find('=');
  std::size_t numNodes = 0;
  const char* end = text.data() + std::min(sign, text.size());
  const auto [stop, error] = std::from_chars(text.data(), end, numNodes);
  const auto kind =
      sign == text.npos ? std::nullopt : QovMesh::FindKind(std::string_view(text).substr(sign + 1));
  if (error == std::errc() && stop == end && kind) {
    kinds[numNodes] = *kind;
    return;
  }
  std::string known;
  for (std::size_t i = 0; i < QovMesh::kNumCellKinds; ++i) {
    known += " ";
    known += QovMesh::GetShape(static_cast<QovMesh::CellKind>(i)).mName;
  }
  Util::Raise(kSource, ErrorType::InvalidEnumeration,
              "--cells takes a number of nodes and a kind, such as 4=quad, not " +
                  Util::Quote(text) + "; kinds are" + known);
}

/// Returns the component that a word names; nothing for the length.
std::optional<std::size_t> ComponentOf(const std::string& word) {
  if (word == "magnitude") return std::nullopt;
  if (word.size() == 1 && word >= "x" && word <= "z")
    return static_cast<std::size_t>(word[0] - 'x');
  std::size_t number = 0;
  const auto [stop, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  if (error == std::errc() && stop == word.data() + word.size() && number > 0) return number - 1;
  Util::Raise(kSource, ErrorType::InvalidEnumeration,
              "--component takes x, y, z, magnitude or a number from 1, not " + Util::Quote(word));
}

const char* PlacementText(QovMesh::Placement placement) {
  switch (placement) {
    case QovMesh::Placement::Point:
      return "points";
    case QovMesh::Placement::Cell:
      return "cells";
    case QovMesh::Placement::Field:
      break;
  }
  return "field";
}

class ExportCommand : public Command {
 public:
  const char* GetName() const override { return "export"; }
  const char* GetSummary() const override { return "Write a model in another format"; }
  const char* GetFooter() const override { return kFooter; }
  void Declare(CLI::App& app) override;
  int Run(Output& output, Output& errors) override;

 private:
  void DryRun(const ExportContent& content, Output& output);
  void Write(Format format, const ExportTask& task, OutputSet& outputs) const;
  void WriteGrid(const ExportTask& task, OutputSet& outputs) const;
  void CheckOutput(Format format) const;

  std::string mModel;
  std::string mOutputPath;
  ExportRequest mRequest;
  std::vector<std::string> mCells;
  std::string mResult;
  std::string mComponent = "magnitude";
  bool mNoSets = false;
  bool mDryRun = false;
  bool mOverwrite = false;
};

void ExportCommand::Declare(CLI::App& app) {
  app.add_option("MODEL", mModel, "Model file")->required();
  app.add_option("-o,--output", mOutputPath, "File to write; its ending decides on the format")
      ->type_name("OUT")
      ->required();
  app.add_option("--nodes", mRequest.mNodes, "Only these nodes and what is below them")
      ->type_name("PATTERN")
      ->allow_extra_args(false);
  app.add_option("--results", mRequest.mResults, "Only these results")
      ->type_name("PATTERN")
      ->allow_extra_args(false);
  app.add_option("--steps", mRequest.mSteps, "Only these steps or load cases")
      ->type_name("PATTERN")
      ->allow_extra_args(false);
  app.add_flag("--no-sets", mNoSets, "Leave out node sets");
  app.add_option("--cells", mCells, "The kind of cells with a number of nodes")
      ->type_name("COUNT=KIND")
      ->allow_extra_args(false);
  app.add_option("--result", mResult, "The result that colours a .glb file")->type_name("NAME");
  app.add_option("--component", mComponent, "Which of its components: x, y, z, magnitude or N")
      ->type_name("WHICH");
  app.add_flag("--dry-run", mDryRun, "Show what would be written and what would not");
  app.add_flag("--overwrite", mOverwrite, "Replace files that exist");
}

void ExportCommand::CheckOutput(Format format) const {
  std::error_code error;
  if (std::filesystem::equivalent(mOutputPath, mModel, error)) {
    Util::Raise(kSource, ErrorType::MiscellaneousError,
                Util::Quote(mOutputPath) + " is the model itself: name another output");
  }
  if (format != Format::Glb && !mResult.empty()) {
    Util::Raise(kSource, ErrorType::InvalidMethod,
                "--result is for .glb files; --results chooses what other formats hold");
  }
  ComponentOf(mComponent);
}

void ExportCommand::Write(Format format, const ExportTask& task, OutputSet& outputs) const {
  switch (format) {
    case Format::Vtu:
      return WriteGrid(task, outputs);
    case Format::Vtm:
      return WriteVtm(task, mOutputPath, outputs);
    case Format::Pvd:
      return WritePvd(task, mOutputPath, outputs);
    case Format::Glb:
      return WriteGlb(task, {mResult, ComponentOf(mComponent)}, mOutputPath, outputs);
    case Format::Stl:
      return WriteStl(task, mOutputPath, outputs);
    case Format::Ply:
      return WritePly(task, mOutputPath, outputs);
    case Format::Csv:
      return WriteCsv(task, mOutputPath, outputs);
    case Format::Npz:
      return WriteNpz(task, mOutputPath, outputs);
    case Format::Case:
      return WriteEnsight(task, mOutputPath, outputs);
  }
}

void ExportCommand::WriteGrid(const ExportTask& task, OutputSet& outputs) const {
  std::vector<const ExportPart*> parts;
  for (const ExportPart& part : task.mContent.mParts) parts.push_back(&part);
  ExportSets sets(task.mTree, task.mContent);
  MeshCache meshes(task.mKinds);
  WriteVtu(parts, sets, meshes, task.mNotes, outputs.Open(mOutputPath));
}

void ExportCommand::DryRun(const ExportContent& content, Output& output) {
  const TextStyle& style = output.GetStyle();
  MeshCache meshes(mRequest.mKinds);
  for (const ExportPart& part : content.mParts) {
    const QovMesh::Mesh& mesh = meshes.Get(part);
    output.Line(fmt::format("{} [{}]: {} points, {} cells", Escape(part.mName, style), part.mId,
                            mesh.GetNumPoints(), mesh.GetNumCells()));
    for (const auto& decision : mesh.mDecisions) output.Line("  " + DescribeDecision(decision));
    for (const std::string& warning : mesh.mWarnings) output.Line("  " + warning);
    TextTable table({{"RESULT"}, {"AT"}, {"WIDTH", TextTable::Align::Right}, {"STEP"}}, 60);
    for (const ExportResult& result : part.mResults) {
      table.AddRow({Escape(result.mName, style), PlacementText(result.mPlacement),
                    fmt::format("{}", result.mWidth),
                    result.mStep ? Escape(content.mSteps[*result.mStep].mName, style) : ""});
    }
    if (part.mResults.empty()) continue;
    for (const std::string& line : table.GetLines()) output.Line("  " + line);
  }
  for (const QovMesh::Step& step : content.mSteps) {
    output.Line(fmt::format("Step {}: {} ({})", Escape(step.mName, style),
                            step.mTime ? fmt::format("time {}", *step.mTime) : "no time",
                            step.mSource));
  }
  for (const std::string& note : content.mNotes) output.Line("Note: " + note);
  for (const std::string& omission : content.mOmissions) output.Line("Left out: " + omission);
}

std::size_t CountResults(const ExportContent& content) {
  std::size_t count = 0;
  for (const ExportPart& part : content.mParts) count += part.mResults.size();
  return count;
}

int ExportCommand::Run(Output& output, Output& errors) {
  const Format format = FormatOf(mOutputPath);
  mRequest.mSets = !mNoSets;
  for (const std::string& text : mCells) AddKind(text, mRequest.mKinds);
  CheckOutput(format);
  QovRyx::Tree tree(false);
  QovRyx::Tree::IdMap ids;
  tree.Load(mModel, ids, QovRyx::Tree::ReadMode::WithoutViews,
            QovRyx::Tree::SupportedFileFormats::Ryx);
  const bool separateSteps = format == Format::Pvd || format == Format::Case;
  const ExportContent content = ChooseContent(tree, mRequest, separateSteps);
  if (mDryRun) {
    DryRun(content, output);
    return kSuccess;
  }
  std::vector<std::string> notes = content.mNotes;
  QovJbf::RemoveOutputsOnSignals();
  OutputSet outputs(mOverwrite);
  Write(format, {tree, content, mRequest.mKinds, notes}, outputs);
  outputs.CommitAll();
  for (const std::string& note : notes) errors.Line("ryx export: " + note);
  const std::size_t numParts = content.mParts.size();
  const std::size_t numResults = CountResults(content);
  const std::size_t numFiles = outputs.GetNumFiles();
  output.Line(fmt::format("Wrote {} geometr{} and {} result{} to {} ({} file{}).", numParts,
                          numParts == 1 ? "y" : "ies", numResults, numResults == 1 ? "" : "s",
                          Escape(mOutputPath, output.GetStyle()), numFiles,
                          numFiles == 1 ? "" : "s"));
  return kSuccess;
}

}  // namespace

std::unique_ptr<Command> MakeExportCommand() { return std::make_unique<ExportCommand>(); }

}  // namespace Qov::Tools
