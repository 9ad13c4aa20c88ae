#include "Qov/Ryx/Extract.h"

#include <fmt/format.h>

#include <CLI/App.hpp>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "Command.h"
#include "ErrorText.h"
#include "Json.h"
#include "OutputSettingsOptions.h"
#include "Plural.h"
#include "Qov/Util/Raise.h"
#include "SelectionOptions.h"
#include "container/SignalRemovals.h"
#include "diagnostics/Printable.h"
#include "ledger/MergeRequest.h"
#include "merge/ArrayNames.h"

namespace Qov::Tools {
namespace {

using QovRyx::ExtractReport;
using QovRyx::ExtractRequest;

constexpr const char* kFooter =
    "PATTERN is a name as \"ryx ls\" shows it, in which *, ? and [...] can replace parts. A "
    "number\n"
    "also chooses the node of that id. Results are chosen by their names with or without the load\n"
    "case or time step. Each of these options can be repeated. Nodes keep their ids, so views "
    "still\n"
    "fit.\n"
    "\n"
    "A result that is linked to one that is left out takes its values.\n"
    "\n"
    "Example: ryx extract plate.ryx -o stress.ryx --results Stress --instances LC2\n"
    "         ryx extract assembly.ryx -o part.ryx --nodes 'Post*' --without-nodes 'Post 2'\n"
    "         ryx extract plate.ryx -o renamed.ryx --rename-instance LC1=Braking";

class ExtractCommand : public Command {
 public:
  const char* GetName() const override { return "extract"; }
  const char* GetSummary() const override { return "Write a part of a model, or rename its parts"; }
  const char* GetFooter() const override { return kFooter; }
  void Declare(CLI::App& app) override;
  int Run(Output& output, Output& errors) override;

 private:
  void Print(const ExtractReport& report, Output& output) const;
  void PrintJson(const ExtractReport& report, Output& output) const;

  ExtractRequest mRequest;
  std::vector<std::string> mNodeNames;
  std::vector<std::string> mResultNames;
  std::vector<std::string> mInstanceNames;
  bool mJson = false;
};

void DeclareNames(CLI::App& app, const char* name, std::vector<std::string>& words,
                  const char* help) {
  app.add_option(name, words, help)->type_name("OLD=NEW")->allow_extra_args(false);
}

void ExtractCommand::Declare(CLI::App& app) {
  app.add_option("INPUT", mRequest.mInput, "Model file")->required();
  DeclareSelection(app, mRequest.mSelection);
  DeclareNames(app, "--rename-node", mNodeNames, "Rename the nodes of a name, or the one of an id");
  DeclareNames(app, "--rename-result", mResultNames, "Rename results, in all load cases or steps");
  DeclareNames(app, "--rename-instance", mInstanceNames, "Rename a load case or step");
  DeclareOutputSettings(app, mRequest.mOutput, mRequest.mSettings);
  app.add_flag("--dry-run", mRequest.mDryRun, "Show what would be written; write nothing");
  app.add_flag("--json", mJson, "Print one JSON document");
}

/// Splits "OLD=NEW" at the first equals sign.
QovRyx::Renames ReadNames(const std::vector<std::string>& words, const char* option) {
  QovRyx::Renames names;
  for (const std::string& word : words) {
    const std::size_t sign = word.find('=');
    if (sign == word.npos) {
      Util::Raise("tools/Extract", Util::Exception::ErrorType::InvalidMethod,
                  std::string(option) + " takes OLD=NEW, not \"" + word + '"');
    }
    names.emplace_back(Unescape(word.substr(0, sign)), Unescape(word.substr(sign + 1)));
  }
  return names;
}

/// Adds a note for each array of the mesh that gets another name.
void AddMeshNotes(const QovRyx::Renames& renames, ExtractReport& report) {
  const auto isMesh = [](const std::string& name) {
    return QovRyx::IsMeshBase(QovRyx::SplitName(name).mBase);
  };
  for (const auto& [oldName, newName] : renames) {
    if (!isMesh(oldName) || isMesh(newName)) continue;
    report.mNotes.push_back(Util::Quote(oldName) +
                            " is a part of the mesh: geometries without it have no mesh");
  }
}

void ExtractCommand::Print(const ExtractReport& report, Output& output) const {
  output.Line(fmt::format("{} {} and {} to {}.", mRequest.mDryRun ? "Would write" : "Wrote",
                          Plural(report.mNodes, "node"), Plural(report.mResults, "result"),
                          Escape(mRequest.mOutput, output.GetStyle())));
  output.Line(fmt::format("Left out: {}, {}.", Plural(report.mNodesLeftOut, "node"),
                          Plural(report.mResultsLeftOut, "result")));
  if (report.mLinksReplaced != 0) {
    output.Line(fmt::format("Took the values of results that are left out: {}.",
                            Plural(report.mLinksReplaced, "linked result")));
  }
  if (report.mNodesRenamed + report.mResultsRenamed != 0) {
    output.Line(fmt::format("Renamed: {}, {}.", Plural(report.mNodesRenamed, "node"),
                            Plural(report.mResultsRenamed, "result")));
  }
}

void ExtractCommand::PrintJson(const ExtractReport& report, Output& output) const {
  Json document = MakeJsonDocument(GetName());
  document["input"] = JsonText(mRequest.mInput);
  document["output"] = JsonText(mRequest.mOutput);
  document["dryRun"] = mRequest.mDryRun;
  document["nodes"] = report.mNodes;
  document["results"] = report.mResults;
  document["nodesLeftOut"] = report.mNodesLeftOut;
  document["resultsLeftOut"] = report.mResultsLeftOut;
  document["linksReplaced"] = report.mLinksReplaced;
  document["nodesRenamed"] = report.mNodesRenamed;
  document["resultsRenamed"] = report.mResultsRenamed;
  document["notes"] = NotesJson(report.mNotes);
  output.Line(FormatJson(document));
}

int ExtractCommand::Run(Output& output, Output& errors) {
  mRequest.mNodeNames = ReadNames(mNodeNames, "--rename-node");
  mRequest.mResultNames = ReadNames(mResultNames, "--rename-result");
  mRequest.mInstanceNames = ReadNames(mInstanceNames, "--rename-instance");
  QovJbf::RemoveOutputsOnSignals();
  ExtractReport report;
  try {
    report = QovRyx::Extract(mRequest);
    AddMeshNotes(mRequest.mResultNames, report);
  } catch (const std::exception& error) {
    if (IsViewPointFile(mRequest.mInput)) {
      errors.Line(fmt::format("ryx extract: \"{}\" is a view-point file and not a model",
                              Escape(mRequest.mInput, errors.GetStyle())));
      return kTrouble;
    }
    errors.Line("ryx extract: " + DescribeErrorOfFile(error, errors.GetStyle()));
    return kTrouble;
  }
  if (mJson) {
    PrintJson(report, output);
    return kSuccess;
  }
  for (const std::string& note : report.mNotes) {
    errors.Line("ryx extract: " + Escape(RestoreNames(note), errors.GetStyle()));
  }
  Print(report, output);
  return kSuccess;
}

}  // namespace

std::unique_ptr<Command> MakeExtractCommand() { return std::make_unique<ExtractCommand>(); }

}  // namespace Qov::Tools
