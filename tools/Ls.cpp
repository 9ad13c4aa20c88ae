#include <fmt/format.h>

#include <CLI/App.hpp>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Command.h"
#include "ModelInput.h"
#include "ModelJson.h"
#include "ModelQueue.h"
#include "ModelReport.h"
#include "OptionValues.h"

namespace Qov::Tools {
namespace {

constexpr const char* kFooter =
    "KIND is the kind of a result, after its high byte if that is not 0. COUNT is the number of\n"
    "items of WIDTH values. In names \\x1E (\u241E on a UTF-8 terminal) separates the load case "
    "or\n"
    "time step.\n"
    "\n"
    "With --node, --name, --type or --results only nodes that meet all of these are shown, and\n"
    "their ancestors without content. Patterns may contain *, ? and [...].\n"
    "On a terminal, names and texts that do not fit are cut, and columns that do not fit are left\n"
    "out, which an ellipsis after the headings shows. In a pipe nothing is cut.\n"
    "\n"
    "Example: ryx ls plate.ryx plate.vpt\n"
    "         ryx ls --type geometry --name \"Skin*\" plate.ryx\n"
    "         ryx ls --results \"Stress*\" plate.ryx";

/// Options of the listing.
struct LsOptions {
  NodeCriteria mCriteria;
  bool mHideResults = false;
  bool mJson = false;
};

class LsCommand : public Command {
 public:
  const char* GetName() const override { return "ls"; }
  const char* GetSummary() const override {
    return "Show the tree of models, their results, views and history";
  }
  const char* GetFooter() const override { return kFooter; }
  void Declare(CLI::App& app) override;
  bool OnlyShows() const override { return true; }
  int Run(Output& output, Output& errors) override;

 private:
  std::vector<std::string> mPaths;
  LsOptions mOptions;
};

void LsCommand::Declare(CLI::App& app) {
  NodeCriteria& criteria = mOptions.mCriteria;
  app.add_option("FILE", mPaths, "Model or view-point files")->required();
  CLI::Option* results =
      app.add_option("--results", criteria.mResults,
                     "Show only results whose names match, with or without the load case; "
                     "repeatable")
          ->type_name("PATTERN")
          ->allow_extra_args(false);
  app.add_flag("--no-results", mOptions.mHideResults, "Do not show results, and do not read them")
      ->excludes(results);
  app.add_option("--node", criteria.mIds, "Show the node with this id; repeatable")
      ->type_name("ID")
      ->transform(WholeNumber())
      ->allow_extra_args(false);
  AddText(app, "--name", criteria.mName, "Show nodes whose names match, such as \"Wing*\"")
      ->type_name("PATTERN");
  app.add_option("--type", criteria.mType, "Show nodes of this type")
      ->type_name("TYPE")
      ->check(CLI::IsMember({"Group", "Shape", "Geometry", "NodeSets", "FutureNode"},
                            CLI::ignore_case));
  app.add_option("--depth", criteria.mDepth, "Show only this number of levels of the tree")
      ->type_name("N")
      ->transform(WholeNumber())
      ->check([](const std::string& word) {
        return word == "0" ? "the first level has number 1" : "";
      });
  app.add_flag("--json", mOptions.mJson, "Print one JSON document");
}

/// Lists files one after another.
class FileLister {
 public:
  FileLister(const LsOptions& options, Output& output, Output& errors)
      : mOptions(options), mOutput(output), mErrors(errors) {}

  /// Returns false if not all of the file could be read.
  bool List(const std::string& path, const ModelQueue::Model& model);
  /// Finishes the listing after all files.
  void Close();

 private:
  bool Show(const std::string& path, const QovRyx::Tree& tree);
  bool ShowTree(const std::string& path, const QovRyx::Tree& tree, const NodeFilter& filter,
                const ModelStatistics* statistics);
  bool AddJson(const QovRyx::Tree& tree, const NodeFilter& filter,
               const ModelStatistics* statistics);

  const LsOptions& mOptions;
  Output& mOutput;
  Output& mErrors;
  bool mHasShownFile = false;
  Json mFiles = Json::array();
};

/// Returns false if parts of the model could not be read.
bool FileLister::Show(const std::string& path, const QovRyx::Tree& tree) {
  const NodeFilter filter(tree.GetNodes(), mOptions.mCriteria);
  std::optional<ModelStatistics> statistics;
  const TextStyle style = mOptions.mJson ? TextStyle() : mOutput.GetStyle();
  if (!mOptions.mHideResults) statistics.emplace(tree.GetNodes(), filter, style);
  const ModelStatistics* results = statistics ? &*statistics : nullptr;
  return mOptions.mJson ? AddJson(tree, filter, results) : ShowTree(path, tree, filter, results);
}

bool FileLister::ShowTree(const std::string& path, const QovRyx::Tree& tree,
                          const NodeFilter& filter, const ModelStatistics* statistics) {
  if (mHasShownFile) mOutput.Line();
  mHasShownFile = true;
  mOutput.Line(Escape(path, mOutput.GetStyle()));
  const bool complete = ReportNodes(tree, filter, statistics, mOutput);
  if (filter.IsEmpty())
    mOutput.Line(filter.ChoosesResults() ? "(no result matches)" : "(no node matches)");
  if (!filter.IsActive()) {
    ReportViews(tree, LongLines::Cut, mOutput);
    ReportHistory(tree, LongLines::Cut, mOutput);
  }
  mOutput.Flush();
  return complete;
}

bool FileLister::AddJson(const QovRyx::Tree& tree, const NodeFilter& filter,
                         const ModelStatistics* statistics) {
  bool complete = true;
  Json& file = mFiles.back();
  file["nodes"] = NodesJson(tree, filter, statistics, complete);
  if (filter.IsActive()) return complete;
  file["views"] = ViewsJson(tree);
  file["history"] = HistoryJson(tree);
  return complete;
}

bool FileLister::List(const std::string& path, const ModelQueue::Model& model) {
  const QovRyx::Tree& tree = model.mTree;
  mFiles.push_back({{"path", JsonText(path)}});
  std::string trouble = model.mTrouble;
  const bool isShown = trouble.empty() || HoldsAnything(tree);
  if (isShown && !Show(path, tree) && trouble.empty()) trouble = "parts of it cannot be read";
  if (trouble.empty()) return true;
  mFiles.back()["trouble"] = Escape(trouble, {});
  mErrors.Line("ryx ls: " + Escape(path + ": " + trouble, mErrors.GetStyle()));
  return false;
}

void FileLister::Close() {
  if (!mOptions.mJson) return;
  Json document = MakeJsonDocument("ls");
  document["files"] = std::move(mFiles);
  mOutput.Line(FormatJson(document));
}

int LsCommand::Run(Output& output, Output& errors) {
  FileLister lister(mOptions, output, errors);
  int status = kSuccess;
  ModelQueue models(mPaths, [this](const QovRyx::NodeTree& nodes) {
    return mOptions.mHideResults
               ? QovJbf::ReadAhead::Parts()
               : ModelStatistics::PlanReads(nodes, NodeFilter(nodes, mOptions.mCriteria));
  });
  for (const std::string& path : mPaths) {
    if (!lister.List(path, *models.Take())) status = kTrouble;
  }
  lister.Close();
  return status;
}

}  // namespace

std::unique_ptr<Command> MakeLsCommand() { return std::make_unique<LsCommand>(); }

}  // namespace Qov::Tools
