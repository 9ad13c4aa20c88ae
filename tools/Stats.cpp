#include <fmt/format.h>

#include <CLI/App.hpp>
#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Command.h"
#include "ModelQueue.h"
#include "Plural.h"
#include "stats/StatisticsReport.h"

namespace Qov::Tools {
namespace {

constexpr const char* kFooter =
    "Results of one name are taken together, over all geometries and files. A result of several\n"
    "components has a row for each of them, from 0; one of three also for the magnitude. NaNs are\n"
    "counted and otherwise left out. Mesh arrays are left out unless a PATTERN matches them.\n"
    "PATTERN may contain *, ? and [...]. Names are written as \"ryx ls\" shows them, with or\n"
    "without the load case. A pattern without a match is an error.\n"
    "The place of an extreme is the id of a node or an element; where a mesh has no ids, a "
    "position\n"
    "from 0: a point or a cell. An item belongs to a result that is neither for nodes nor for\n"
    "elements.\n"
    "\n"
    "Example: ryx stats --results 'Stress*' run1.ryx run2.ryx";

class StatsCommand : public Command {
 public:
  const char* GetName() const override { return "stats"; }
  const char* GetSummary() const override {
    return "Show extremes with their places, means and RMS of results";
  }
  const char* GetFooter() const override { return kFooter; }
  void Declare(CLI::App& app) override;
  bool OnlyShows() const override { return true; }
  int Run(Output& output, Output& errors) override;

 private:
  std::vector<StatisticsTrouble> Read(ResultStatistics& statistics) const;
  void Print(const ResultStatistics& statistics, const std::vector<StatisticsTrouble>& trouble,
             Output& output) const;
  void PrintTrouble(const std::vector<StatisticsTrouble>& trouble, Output& errors) const;

  std::vector<std::string> mPaths;
  std::vector<std::string> mPatterns;
  std::string mFormat = "table";
};

void StatsCommand::Declare(CLI::App& app) {
  app.add_option("FILE", mPaths, "Model files")->required();
  app.add_option("--results", mPatterns, "Show only results whose names match; repeatable")
      ->type_name("PATTERN")
      ->allow_extra_args(false);
  app.add_option("--format", mFormat, "Output format")
      ->type_name("FORMAT")
      ->check(CLI::IsMember({"table", "csv", "json"}))
      ->capture_default_str();
}

/// Returns the parts that could not be read.
std::vector<StatisticsTrouble> StatsCommand::Read(ResultStatistics& statistics) const {
  std::vector<StatisticsTrouble> trouble;
  ModelQueue models(mPaths,
                    [&](const QovRyx::NodeTree& nodes) { return statistics.PlanReads(nodes); });
  for (std::size_t i = 0; i < mPaths.size(); ++i) {
    const std::unique_ptr<ModelQueue::Model> model = models.Take();
    if (!model->mTrouble.empty()) trouble.push_back({i, model->mTrouble});
    statistics.Add(i, model->mTree.GetNodes());
  }
  trouble.insert(trouble.end(), statistics.GetTrouble().begin(), statistics.GetTrouble().end());
  return trouble;
}

void StatsCommand::Print(const ResultStatistics& statistics,
                         const std::vector<StatisticsTrouble>& trouble, Output& output) const {
  const std::vector<StatisticsRow>& rows = statistics.GetRows();
  if (mFormat == "csv") return PrintCsv(rows, mPaths, output);
  if (mFormat == "json") {
    Json document = MakeJsonDocument(GetName());
    document["trouble"] = Json::array();
    for (const StatisticsTrouble& part : trouble) {
      document["trouble"].push_back(
          {{"path", JsonText(mPaths[part.mFile])}, {"text", Escape(part.mText, {})}});
    }
    document["rows"] = RowsJson(rows, mPaths);
    return output.Line(FormatJson(document));
  }
  if (rows.empty()) return output.Line("(no results)");
  PrintTables(rows, mPaths, output);
}

void StatsCommand::PrintTrouble(const std::vector<StatisticsTrouble>& trouble,
                                Output& errors) const {
  constexpr std::size_t kMostShown = 20;
  for (std::size_t i = 0; i < std::min(kMostShown, trouble.size()); ++i) {
    const std::string text = mPaths[trouble[i].mFile] + ": " + trouble[i].mText;
    errors.Line("ryx stats: " + Escape(text, errors.GetStyle()));
  }
  if (trouble.size() <= kMostShown) return;
  errors.Line("ryx stats: " + Plural(trouble.size() - kMostShown, "more part") + " cannot be read");
}

int StatsCommand::Run(Output& output, Output& errors) {
  ResultStatistics statistics(mPatterns);
  const std::vector<StatisticsTrouble> trouble = Read(statistics);
  Print(statistics, trouble, output);
  PrintTrouble(trouble, errors);
  const std::string* unused = statistics.FindUnusedPattern();
  if (unused != nullptr) {
    errors.Line("ryx stats: no result matches \"" + Escape(Unescape(*unused), errors.GetStyle()) +
                "\". \"ryx ls\" shows the names.");
  }
  return trouble.empty() && unused == nullptr ? kSuccess : kTrouble;
}

}  // namespace

std::unique_ptr<Command> MakeStatsCommand() { return std::make_unique<StatsCommand>(); }

}  // namespace Qov::Tools
