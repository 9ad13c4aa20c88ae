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
    "\n"
    "Example: ryx info plate.ryx";

class InfoCommand : public Command {
 public:
  const char* GetName() const override { return "info"; }
  const char* GetSummary() const override {
    return "Show versions, history, counts and sizes of files";
  }
  const char* GetFooter() const override { return kFooter; }
  void Declare(CLI::App& app) override {
    app.add_option("FILE", mPaths, "Model or view-point files")->required();
    app.add_flag("--json", mJson, "Print one JSON document");
  }
  bool OnlyShows() const override { return true; }
  int Run(Output& output, Output& errors) override;

 private:
  std::vector<std::string> mPaths;
  bool mJson = false;
};

int InfoCommand::Run(Output& output, Output& errors) {
  int status = kSuccess;
  Json files = Json::array();
  for (const std::string& path : mPaths) {
    const FileInfo info(path);
    if (mJson) {
      files.push_back(info.MakeJson());
    } else if (info.HasContent()) {
      if (&path != &mPaths.front()) output.Line();
      info.Report(output);
      output.Flush();
    }
    if (info.GetTrouble().empty()) continue;
    status = kTrouble;
    errors.Line("ryx info: " + Escape(path + ": " + info.GetTrouble(), errors.GetStyle()));
  }
  if (!mJson) return status;
  Json document = MakeJsonDocument(GetName());
  document["files"] = std::move(files);
  output.Line(FormatJson(document));
  return status;
}

}  // namespace

std::unique_ptr<Command> MakeInfoCommand() { return std::make_unique<InfoCommand>(); }

}  // namespace Qov::Tools
