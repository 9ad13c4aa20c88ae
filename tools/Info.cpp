#include <CLI/App.hpp>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "Command.h"
#include "FileInfo.h"

namespace Qov::Tools {
namespace {

constexpr const char* kFooter =
    "Reads no values of results; sizes come from the index of the file. \"In memory\" means\n"
    "uncompressed.\n"
    "The table has the numbers of nodes, geometries, results and instances (load cases or time\n"
    "steps), the size of the file, its size in memory divided by that (RATIO), and the program "
    "that\n"
    "wrote it.\n"
    "\n"
    "Examples: ryx info plate.ryx\n"
    "          ryx info --table run*.ryx";

class InfoCommand : public Command {
 public:
  const char* GetName() const override { return "info"; }
  const char* GetSummary() const override {
    return "Show versions, history, counts and sizes of files";
  }
  const char* GetFooter() const override { return kFooter; }
  void Declare(CLI::App& app) override {
    app.add_option("FILE", mPaths, "Model or view-point files")->required();
    CLI::Option* table = app.add_flag("--table", mTable, "Show one line for each file");
    app.add_flag("--json", mJson, "Print one JSON document")->excludes(table);
  }
  bool OnlyShows() const override { return true; }
  int Run(Output& output, Output& errors) override;

 private:
  void Show(const FileInfo& info, Output& output);

  std::vector<std::string> mPaths;
  bool mTable = false;
  bool mJson = false;
  bool mHasShownFile = false;
};

void InfoCommand::Show(const FileInfo& info, Output& output) {
  if (mHasShownFile) output.Line();
  mHasShownFile = true;
  info.Report(output);
  output.Flush();
}

int InfoCommand::Run(Output& output, Output& errors) {
  int status = kSuccess;
  Json files = Json::array();
  const TextStyle& style = output.GetStyle();
  TextTable table = FileInfo::MakeTable(style);
  for (const std::string& path : mPaths) {
    const FileInfo info(path);
    if (mJson) {
      files.push_back(info.MakeJson());
    } else if (mTable && info.HasContent()) {
      table.AddRow(info.MakeRow(style));
    } else if (info.HasContent()) {
      Show(info, output);
    }
    if (info.GetTrouble().empty()) continue;
    status = kTrouble;
    errors.Line("ryx info: " + Escape(path + ": " + info.GetTrouble(), errors.GetStyle()));
  }
  if (style.mTerminal) table.Fit(style.mWidth, style);
  for (const std::string& line : table.GetLines()) output.Line(line);
  if (!mJson) return status;
  Json document = MakeJsonDocument(GetName());
  document["files"] = std::move(files);
  output.Line(FormatJson(document));
  return status;
}

}  // namespace

std::unique_ptr<Command> MakeInfoCommand() { return std::make_unique<InfoCommand>(); }

}  // namespace Qov::Tools
