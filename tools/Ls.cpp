#include <fmt/format.h>

#include <string>
#include <vector>

#include "Command.h"
#include "ErrorText.h"
#include "ModelInput.h"
#include "ModelReport.h"

namespace Qov::Tools {
namespace {

constexpr const char* kFooter =
    "KIND is the kind of a result, with the high byte in front if it has one. COUNT counts items\n"
    "of WIDTH values. In names \\x1E (on a terminal, where it can be shown, \u241E) stands in\n"
    "front of the load case or time step.\n"
    "\n"
    "Example: ryx ls plate.ryx plate.vpt";

class LsCommand : public Command {
 public:
  const char* GetName() const override { return "ls"; }
  const char* GetSummary() const override {
    return "Show the tree of models, their results, views and history";
  }
  const char* GetFooter() const override { return kFooter; }
  void Declare(CLI::App& app) override {
    app.add_option("FILE", mPaths, "Model or view-point files")->required();
  }
  int Run(Output& output, Output& errors) override;

 private:
  std::vector<std::string> mPaths;
};

/// Lists files one after the other.
class FileLister {
 public:
  FileLister(Output& output, Output& errors) : mOutput(output), mErrors(errors) {}

  /// Returns false if not all of the file could be read.
  bool List(const std::string& path);

 private:
  std::string Load(const std::string& path, QovRyx::Tree& tree) const;
  bool Show(const std::string& path, const QovRyx::Tree& tree);

  Output& mOutput;
  Output& mErrors;
  bool mHasShownFile = false;
};

/// Returns what went wrong, or an empty string.
std::string FileLister::Load(const std::string& path, QovRyx::Tree& tree) const {
  try {
    LoadModelOrViews(path, tree);
  } catch (const std::exception& error) {
    std::string text = DescribeError(error, mErrors.GetStyle());
    const std::string subject = Escape(path, mErrors.GetStyle()) + " ";
    return text.starts_with(subject) ? text.substr(subject.size()) : text;
  }
  return "";
}

bool FileLister::Show(const std::string& path, const QovRyx::Tree& tree) {
  if (mHasShownFile) mOutput.Line();
  mHasShownFile = true;
  mOutput.Line(Escape(path, mOutput.GetStyle()));
  const bool complete = ReportNodes(tree, mOutput);
  ReportViews(tree, mOutput);
  ReportHistory(tree, mOutput);
  mOutput.Flush();
  return complete;
}

bool HoldsAnything(const QovRyx::Tree& tree) {
  const auto& nodes = tree.GetNodes();
  return nodes.GetSize() > 1 || nodes.begin()->second.mData || tree.HasViewPoints() ||
         !tree.GetModifiers().empty();
}

bool FileLister::List(const std::string& path) {
  QovRyx::Tree tree(false);
  std::string trouble = Load(path, tree);
  const bool isShown = trouble.empty() || HoldsAnything(tree);
  if (isShown && !Show(path, tree) && trouble.empty()) trouble = "parts of it cannot be read";
  if (trouble.empty()) return true;
  mErrors.Line(fmt::format("ryx ls: {}: {}", Escape(path, mErrors.GetStyle()), trouble));
  return false;
}

int LsCommand::Run(Output& output, Output& errors) {
  FileLister lister(output, errors);
  int status = kSuccess;
  for (const std::string& path : mPaths) {
    if (!lister.List(path)) status = kTrouble;
  }
  return status;
}

}  // namespace

std::unique_ptr<Command> MakeLsCommand() { return std::make_unique<LsCommand>(); }

}  // namespace Qov::Tools
