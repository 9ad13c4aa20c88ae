#include <fmt/format.h>

#include <CLI/App.hpp>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "Command.h"
#include "ErrorText.h"
#include "Qov/Util/Raise.h"
#include "SafeOutput.h"
#include "diagnostics/Printable.h"
#include "export/ContentOptions.h"
#include "export/ExportContent.h"
#include "export/ExportFormat.h"
#include "export/ExportReport.h"
#include "picture/ResultScalars.h"

namespace Qov::Tools {
namespace {

using ErrorType = Util::Exception::ErrorType;

constexpr const char* kSource = "tools/Export";
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
  ContentOptions mContent;
  std::string mResult;
  std::string mComponent = "magnitude";
  bool mNoSets = false;
  bool mDryRun = false;
  bool mOverwrite = false;
  bool mJson = false;
};

void ExportCommand::Declare(CLI::App& app) {
  app.add_option("MODEL", mModel, "Model file")->required();
  app.add_option("-o,--output", mOutputPath, "File to write; its ending determines the format")
      ->type_name("OUT")
      ->required();
  mContent.DeclareChoice(app);
  CLI::Option* sets =
      AddPatterns(app, "--sets", mContent.mRequest.mSetNames, "Only these node sets");
  app.add_flag("--no-sets", mNoSets, "No node sets")->excludes(sets);
  mContent.DeclareCells(app);
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
  const ExportTask task{report.mTree, report.mContent, mContent.mRequest.mKinds, report.mNotes,
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
  PrintNotes("export", report.mNotes, "dry-run", errors);
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
  mContent.mRequest.mSets = !mNoSets;
  mContent.Finish();
  CheckOptions(format);
  QovRyx::Tree tree(false);
  if (!LoadForExport("export", mModel, tree, errors)) return kTrouble;
  const ExportContent content = ChooseContent(tree, mContent.mRequest, GetStepLayout(format));
  ExportReport report{tree, content, format, mOutputPath, false, 0, 0, {}, content.mNotes};
  QovJbf::RemoveOutputsOnSignals();
  Write(report);
  Print(report, output, errors);
  return content.mIsComplete ? kSuccess : kIncomplete;
}

}  // namespace

std::unique_ptr<Command> MakeExportCommand() { return std::make_unique<ExportCommand>(); }

}  // namespace Qov::Tools
