#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <exception>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Command.h"
#include "ErrorText.h"
#include "Json.h"
#include "ModelInput.h"
#include "OptionValues.h"
#include "Plural.h"
#include "Qov/Util/FileContext.h"
#include "Qov/Util/Raise.h"
#include "diagnostics/Utf8.h"
#include "diff/DiffReporting.h"
#include "diff/ModelDiff.h"
#include "diff/StreamDiff.h"
#include "dump/Choice.h"

namespace Qov::Tools {
namespace {

constexpr const char* kFooter =
    "Nodes are matched by path, results by name; the second of two equal names is marked [2].\n"
    "Values are compared bit for bit. With a tolerance, two floats are equal if one of its limits\n"
    "holds, and all NaNs are equal. Integers are always compared exactly.\n"
    "--tolerance applies to results whose names match PATTERN, which may contain * and ?. Names\n"
    "are written as \"ryx ls\" shows them, with or without the load case. The last match counts. "
    "A\n"
    "pattern without a match is an error.\n"
    "A file of tolerances has one of these texts on each line, and comments after #.\n"
    "WHAT is a list, with commas, of attributes, flags, groups, history, links, materials,\n"
    "node-sets, order, streams, tree-links, values, version and views.\n"
    "Exit status: 0 equal, 1 different, 2 a file, or a part of one, cannot be read.\n"
    "\n"
    "Example: ryx diff --ignore history --rel 1e-6 --tolerance 'Stress*:abs=0.5' a.ryx b.ryx";

class DiffCommand : public Command {
 public:
  const char* GetName() const override { return "diff"; }
  const char* GetSummary() const override { return "Show the differences between two models"; }
  const char* GetFooter() const override { return kFooter; }
  void Declare(CLI::App& app) override;
  int Run(Output& output, Output& errors) override;

 private:
  DiffOptions MakeOptions(const QovRyx::Tree& a, const QovRyx::Tree& b) const;
  Json MakeDocument(const DiffReport& report, const Json& trouble) const;
  void CheckTolerances(const Tolerances& tolerances, const QovRyx::Tree& a, const QovRyx::Tree& b,
                       Output& errors) const;

  std::string mPathA;
  std::string mPathB;
  bool mJson = false;
  CLI::Option* mAbsoluteOption = nullptr;
  CLI::Option* mRelativeOption = nullptr;
  CLI::Option* mUlpOption = nullptr;
  Tolerance mDefault;
  std::vector<std::string> mNamed;
  std::string mTolerancePath;
  std::optional<std::string> mRootA;
  std::optional<std::string> mRootB;
  bool mNamesIds = false;
  bool mComputesNorms = false;
  std::vector<std::string> mIgnored;
};

/// Returns an error message, or an empty string, as the parser expects.
std::string ValidateTolerance(const std::string& text) {
  try {
    ParseNamedTolerance(text);
  } catch (const std::exception& error) {
    return ErrorText(error);
  }
  return "";
}

std::string ValidateMagnitude(const std::string& text) {
  double value = 0;
  if (ParseMagnitude(text, value)) return "";
  return fmt::format("\"{}\" should be a finite number that is not negative", text);
}

void DiffCommand::Declare(CLI::App& app) {
  app.add_option("A", mPathA, "A model or view-point file")->required();
  app.add_option("B", mPathB, "The other file")->required();
  app.add_flag("--json", mJson, "Print one JSON document");
  mAbsoluteOption = app.add_option("--abs", mDefault.mAbsolute, "Absolute tolerance")
                        ->check(ValidateMagnitude, "");
  mRelativeOption = app.add_option("--rel", mDefault.mRelative,
                                   "Relative tolerance, as a factor of the larger magnitude")
                        ->check(ValidateMagnitude, "");
  mUlpOption = app.add_option("--ulp", mDefault.mUlps, "Tolerance in steps between adjacent floats")
                   ->transform(WholeNumber());
  app.add_option("--tolerance", mNamed,
                 "PATTERN:abs=X,rel=X,ulp=N, for matching results; repeatable")
      ->check(ValidateTolerance, "")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->type_name("TEXT");
  app.add_option("--tolerances", mTolerancePath, "File of such tolerances, one on each line")
      ->type_name("FILE");
  app.add_flag("--ids", mNamesIds, "Name node and element ids of A instead of positions");
  app.add_flag("--norms", mComputesNorms,
               "Show the maximum, the L2 norm and the relative L2 norm of each difference");
  AddText(app, "--root-a", mRootA, "Compare only this node of A and the nodes below it")
      ->type_name("NODE");
  AddText(app, "--root-b", mRootB, "Compare only this node of B and the nodes below it")
      ->type_name("NODE");
  app.add_option("--ignore", mIgnored, "Parts that are not compared")
      ->check(CLI::IsMember(std::vector<std::string>(std::begin(kIgnorable), std::end(kIgnorable)))
                  .description(""))
      ->delimiter(',')
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->type_name("WHAT");
}

/// Returns the id of the node that a word names, which is an id or a name.
std::optional<std::uint32_t> FindRoot(const std::optional<std::string>& word,
                                      const QovRyx::Tree& tree, const std::string& path) {
  if (!word) return std::nullopt;
  return Util::WithFileContext(path,
                               [&] { return ChooseNode<QovRyx::Node>(tree, *word, "node").mId; });
}

DiffOptions DiffCommand::MakeOptions(const QovRyx::Tree& a, const QovRyx::Tree& b) const {
  DiffOptions options;
  options.mNamesIds = mNamesIds;
  options.mComputesNorms = mComputesNorms;
  options.mRootA = FindRoot(mRootA, a, mPathA);
  options.mRootB = FindRoot(mRootB, b, mPathB);
  if (mAbsoluteOption->count() + mRelativeOption->count() + mUlpOption->count() != 0) {
    options.mTolerances.SetDefault(mDefault);
  }
  if (!mTolerancePath.empty()) {
    for (NamedTolerance& tolerance : ReadNamedTolerances(mTolerancePath)) {
      options.mTolerances.Add(std::move(tolerance));
    }
  }
  for (const std::string& text : mNamed) options.mTolerances.Add(ParseNamedTolerance(text));
  options.mIgnored = {mIgnored.begin(), mIgnored.end()};
  return options;
}

void AddResultNames(const QovRyx::Tree& tree, std::set<std::string>& names) {
  QovRyx::ForEachGeometry(tree.GetNodes(),
                          [&names](std::uint32_t, const QovRyx::Geometry& geometry) {
                            for (const auto& result : geometry.GetVariables()) {
                              names.insert(result.mName);
                            }
                          });
}

/// Raises ElementNotFound, with the existing names.
[[noreturn]] void RefuseUnused(const std::string& pattern, const std::set<std::string>& names) {
  constexpr std::size_t kMost = 10;
  constexpr std::size_t kLongest = 80;
  std::string text =
      fmt::format("no result matches the tolerance for \"{}\". There {} {}", Unescape(pattern),
                  names.size() == 1 ? "is" : "are", Plural(names.size(), "name"));
  std::size_t numListed = 0;
  for (const std::string& name : names) {
    if (numListed == kMost) break;
    text += (numListed++ == 0 ? ": " : ", ") + Shortened(name, kLongest);
  }
  if (numListed < names.size()) text += ", ...";
  Util::Raise("tools/Diff", Util::Exception::ErrorType::ElementNotFound, text);
}

/// Refuses a tolerance that matches no result. Only tells so if it is from a file, because a file
/// can be used for several models.
void DiffCommand::CheckTolerances(const Tolerances& tolerances, const QovRyx::Tree& a,
                                  const QovRyx::Tree& b, Output& errors) const {
  constexpr std::size_t kLongest = 80;
  std::set<std::string> names;
  AddResultNames(a, names);
  AddResultNames(b, names);
  std::string example;
  std::size_t numUnused = 0;
  for (const NamedTolerance* tolerance : tolerances.FindUnused(names)) {
    if (!tolerance->mIsFromFile) RefuseUnused(tolerance->mPattern, names);
    if (numUnused++ == 0) example = Shortened(Unescape(tolerance->mPattern), kLongest);
  }
  if (numUnused == 0) return;
  errors.Line("ryx diff: " +
              Escape(fmt::format("{}: {} no result, for example \"{}\"", mTolerancePath,
                                 numUnused == 1 ? "1 tolerance matches"
                                                : fmt::format("{} tolerances match", numUnused),
                                 example),
                     errors.GetStyle()));
}

/// Loads a file. Stores the error, if any, under `key`.
void Load(const std::string& path, QovRyx::Tree& tree, const char* key, Json& trouble,
          Output& errors) {
  const std::string text = LoadWhatCanBeRead(path, tree);
  if (text.empty()) return;
  trouble[key] = Escape(text, {});
  errors.Line("ryx diff: " + Escape(path + ": " + text, errors.GetStyle()));
}

int DiffCommand::Run(Output& output, Output& errors) {
  QovRyx::Tree a(false);
  QovRyx::Tree b(false);
  Json trouble = Json::object();
  Load(mPathA, a, "a", trouble, errors);
  Load(mPathB, b, "b", trouble, errors);
  DiffReport report;
  if (trouble.empty()) {
    const DiffOptions options = MakeOptions(a, b);
    CheckTolerances(options.mTolerances, a, b, errors);
    report = DiffModels(a, b, options);
    if (options.Compares("streams") && !options.ComparesSubtrees()) {
      CompareUnknownStreams(mPathA, mPathB, report);
    }
  }
  if (mJson) {
    output.Line(FormatJson(MakeDocument(report, trouble)));
  } else if (trouble.empty()) {
    output.Line("A: " + Escape(mPathA, output.GetStyle()));
    output.Line("B: " + Escape(mPathB, output.GetStyle()));
    PrintReport(report, output);
  }
  if (trouble.empty() && report.mNumUnreadable != 0) {
    errors.Line("ryx diff: " + Plural(report.mNumUnreadable, "part") +
                " of the files cannot be read");
  }
  if (!report.mIdTrouble.empty()) {
    errors.Line("ryx diff: " + Escape(mPathA + ": " + report.mIdTrouble, errors.GetStyle()));
  }
  if (!trouble.empty() || report.mNumUnreadable != 0) return kTrouble;
  return report.mDifferences.empty() ? kSuccess : kFindings;
}

Json DiffCommand::MakeDocument(const DiffReport& report, const Json& trouble) const {
  Json document = MakeJsonDocument(GetName());
  document["a"] = JsonText(mPathA);
  document["b"] = JsonText(mPathB);
  if (!trouble.empty()) {
    document["trouble"] = trouble;
    return document;
  }
  document["ignored"] = mIgnored;
  AddJson(report, document);
  return document;
}

}  // namespace

std::unique_ptr<Command> MakeDiffCommand() { return std::make_unique<DiffCommand>(); }

}  // namespace Qov::Tools
