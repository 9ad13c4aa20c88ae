#include <fmt/format.h>

#include <CLI/App.hpp>
#include <algorithm>
#include <array>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Command.h"
#include "LinkTarget.h"
#include "ModelInput.h"
#include "OptionValues.h"
#include "Qov/Ryx/ValueOwners.h"
#include "Qov/Util/Raise.h"
#include "VerifiedValues.h"
#include "dump/Choice.h"
#include "dump/FileOutput.h"
#include "dump/StateDump.h"
#include "dump/StreamDump.h"
#include "dump/ValueDump.h"

namespace Qov::Tools {
namespace {

constexpr const char* kFooter =
    "NODE is an id or a name, RESULT a position (from 0) or a name. Names are written as \"ryx\n"
    "ls\" shows them, with \\x1E before a load case. The load case may be omitted if the result "
    "has\n"
    "only one. Floats are printed as the shortest numbers that read back unchanged.\n"
    "A stream is written without a format; the ending of the file has no effect.\n"
    "\n"
    "Example: ryx dump plate.ryx Skin 'Stress\\x1ELC1' -o stress.csv\n"
    "         ryx dump plate.ryx Skin 0 --format npy > points.npy\n"
    "         ryx dump plate.vpt --view-point Front --format json\n"
    "         ryx dump plate.ryx --stream \"Heavy Data\" --blocks";

using ErrorType = Util::Exception::ErrorType;

[[noreturn]] void Raise(ErrorType type, const std::string& text) {
  Util::Raise("tools/Dump", type, text);
}

enum class DumpFormat { Text, Csv, Json, Npy };

class DumpCommand : public Command {
 public:
  const char* GetName() const override { return "dump"; }
  const char* GetSummary() const override {
    return "Print one result's values, or another part of a file";
  }
  const char* GetFooter() const override { return kFooter; }
  void Declare(CLI::App& app) override;
  bool OnlyShows() const override { return true; }
  int Run(Output& output, Output& errors) override;

 private:
  void CheckChoice() const;
  void TakeFormatFromEnding();
  DumpFormat GetFormat() const;
  std::optional<Json> StartDocument() const;
  void RefuseFormats(const char* what) const;
  void RefuseTerminal(const Output& output) const;
  int Show(Output& output, Output& errors) const;
  void ShowModel(const QovRyx::Tree& tree, Output& output, Output& errors) const;
  void ShowState(const QovRyx::Tree& tree, Output& output) const;
  void ShowValues(const QovRyx::Tree& tree, Output& output, Output& errors) const;

  std::string mPath;
  std::optional<std::string> mNode;
  std::optional<std::string> mResult;
  std::string mFormat = "text";
  CLI::Option* mFormatOption = nullptr;
  std::string mOutputPath;
  std::optional<std::string> mView;
  bool mSequencer = false;
  bool mHistory = false;
  std::optional<std::string> mMaterial;
  std::optional<std::string> mAttributes;
  std::optional<std::string> mSets;
  std::optional<std::string> mStream;
  bool mBlocks = false;
};

void DumpCommand::Declare(CLI::App& app) {
  app.add_option("FILE", mPath, "Model or view-point file")->required();
  AddText(app, "NODE", mNode, "A geometry");
  AddText(app, "RESULT", mResult, "A result of the geometry");
  AddText(app, "--view-point", mView, "A view, by name or number; 0 is the current one")
      ->type_name("VIEW");
  app.add_flag("--sequencer", mSequencer, "The sequencer");
  app.add_flag("--history", mHistory, "The programs that wrote the file, oldest first");
  AddText(app, "--material", mMaterial, "The material of a shape")->type_name("NODE");
  AddText(app, "--attributes", mAttributes,
          "The attributes of a group, or of the results of a geometry")
      ->type_name("NODE");
  AddText(app, "--node-set", mSets, "Node sets, or one of them")->type_name("NODE[:SET]");
  AddText(app, "--stream", mStream, "The uncompressed bytes of a stream")->type_name("NAME");
  app.add_flag("--blocks", mBlocks, "The block table of the file, or of the --stream");
  mFormatOption = app.add_option("--format", mFormat, "Output format; csv and npy are for results")
                      ->check(CLI::IsMember({"text", "csv", "json", "npy"}));
  app.add_option("-o,--output", mOutputPath,
                 "Output file; the ending .txt, .csv, .json or .npy sets the format, - is standard "
                 "output")
      ->type_name("FILE");
}

void DumpCommand::CheckChoice() const {
  const int numChosen = (mNode ? 1 : 0) + (mView ? 1 : 0) + (mSequencer ? 1 : 0) +
                        (mHistory ? 1 : 0) + (mMaterial ? 1 : 0) + (mAttributes ? 1 : 0) +
                        (mSets ? 1 : 0) + (mStream || mBlocks ? 1 : 0);
  if (mNode && !mResult) Raise(ErrorType::InvalidMethod, "RESULT of the node is missing");
  if (numChosen == 1) return;
  Raise(ErrorType::InvalidMethod,
        "choose one part: NODE and RESULT, --view-point, --sequencer, --history, "
        "--material, --attributes, --node-set, --stream or --blocks");
}

/// Returns the format for the ending of a file's name; empty if the ending is not known.
std::string FormatOfEnding(const std::string& path) {
  constexpr std::array<std::pair<const char*, const char*>, 4> kEndings = {
      {{".npy", "npy"}, {".csv", "csv"}, {".json", "json"}, {".txt", "text"}}};
  for (const auto& [ending, format] : kEndings) {
    if (path.ends_with(ending)) return format;
  }
  return "";
}

/// Sets the format from the ending. A stream ignores the ending, because its bytes are not
/// formatted.
void DumpCommand::TakeFormatFromEnding() {
  const std::string format = FormatOfEnding(mOutputPath);
  if (format.empty() || (mStream && !mBlocks)) return;
  if (mFormatOption->count() != 0 && mFormat != format) {
    Raise(ErrorType::InvalidMethod,
          fmt::format("the ending of \"{}\" means the format {}, but --format is {}", mOutputPath,
                      format, mFormat));
  }
  mFormat = format;
}

DumpFormat DumpCommand::GetFormat() const {
  if (mFormat == "csv") return DumpFormat::Csv;
  if (mFormat == "json") return DumpFormat::Json;
  return mFormat == "npy" ? DumpFormat::Npy : DumpFormat::Text;
}

std::optional<Json> DumpCommand::StartDocument() const {
  if (GetFormat() != DumpFormat::Json) return std::nullopt;
  Json document = MakeJsonDocument(GetName());
  document["path"] = JsonText(mPath);
  return document;
}

void DumpCommand::RefuseFormats(const char* what) const {
  if (GetFormat() == DumpFormat::Text || GetFormat() == DumpFormat::Json) return;
  Raise(ErrorType::FormatNotSupported, fmt::format("{} cannot be written as {}", what, mFormat));
}

void DumpCommand::RefuseTerminal(const Output& output) const {
  if (!output.GetStyle().mTerminal) return;
  Raise(ErrorType::WriteError, "raw bytes are not written to a terminal: use -o FILE or a pipe");
}

int DumpCommand::Run(Output& output, Output& errors) {
  CheckChoice();
  TakeFormatFromEnding();
  if (mOutputPath.empty() || mOutputPath == "-") return Show(output, errors);
  RefuseToReplaceModel(mOutputPath, mPath);
  FileOutput file(mOutputPath);
  const int status = Show(file, errors);
  if (status == kSuccess || file.IsOpen()) file.Close();
  return status;
}

int DumpCommand::Show(Output& output, Output& errors) const {
  if (mBlocks) {
    RefuseFormats("a block table");
    ShowBlocks(mPath, mStream, StartDocument(), output);
    return kSuccess;
  }
  if (mStream) {
    if (GetFormat() != DumpFormat::Text)
      Raise(ErrorType::FormatNotSupported, "a stream is written as raw bytes, without --format");
    RefuseTerminal(output);
    WriteStream(mPath, *mStream, output);
    return kSuccess;
  }
  QovRyx::Tree tree(false);
  const std::string trouble = LoadWhatCanBeRead(mPath, tree);
  if (!trouble.empty()) {
    errors.Line("ryx dump: " + Escape(mPath + ": " + trouble, errors.GetStyle()));
  }
  if (trouble.empty() || HoldsAnything(tree)) ShowModel(tree, output, errors);
  return trouble.empty() ? kSuccess : kTrouble;
}

void DumpCommand::ShowModel(const QovRyx::Tree& tree, Output& output, Output& errors) const {
  if (mNode) {
    ShowValues(tree, output, errors);
  } else {
    RefuseFormats("this");
    ShowState(tree, output);
  }
}

void DumpCommand::ShowState(const QovRyx::Tree& tree, Output& output) const {
  StateDump dump(tree, StartDocument(), output);
  if (mView) dump.ShowView(*mView);
  if (mSequencer) dump.ShowSequencer();
  if (mHistory) dump.ShowHistory();
  if (mMaterial) dump.ShowMaterial(*mMaterial);
  if (mAttributes) dump.ShowAttributes(*mAttributes);
  if (mSets) dump.ShowSets(*mSets);
}

/// Raises an error if the link of a result is dangling or was not resolved.
void CheckLink(const QovRyx::Tree& tree, const QovRyx::Geometry::VarStruct& variable) {
  const LinkTarget target(tree.GetNodes(), variable);
  if (!target.mHasValues) {
    Raise(ErrorType::ElementNotFound, "the result has a dangling link and no values");
  }
  // Links of a file that was read in part are not resolved.
  if (variable.mValues.GetNumElements() != target.mVariable->mValues.GetNumElements()) {
    Raise(ErrorType::ReadError, "the values cannot be read");
  }
}

Values ReadValues(const QovRyx::Tree& tree, const QovRyx::Geometry::VarStruct& variable) {
  if (variable.mLink.IsLinked()) CheckLink(tree, variable);
  Values values;
  values.mIntegers = QovRyx::ValueOwners(tree.GetNodes()).HoldUnsigned(variable);
  values.mWidth = std::max<std::size_t>(variable.mValues.GetWidth(), 1);
  ReadVerifiedValues(variable.mValues, values.mBits);
  if (values.mBits.size() != variable.mValues.GetNumElements()) {
    Raise(ErrorType::ReadError, "the values cannot be read");
  }
  return values;
}

void DumpCommand::ShowValues(const QovRyx::Tree& tree, Output& output, Output& errors) const {
  const auto& entry = ChooseNode<QovRyx::Geometry>(tree, *mNode, "geometry");
  const QovRyx::Geometry& geometry = *QovRyx::AsGeometry(entry);
  const auto [position, isOnlyInstance] = ChooseResult(geometry, *mResult);
  const auto& variable = geometry.GetVariables()[position];
  if (isOnlyInstance) {
    errors.Line(Escape(fmt::format("ryx dump: printing \"{}\", the only instance of \"{}\"",
                                   variable.mName, Unescape(*mResult)),
                       errors.GetStyle()));
  }
  if (GetFormat() == DumpFormat::Npy) RefuseTerminal(output);
  const Values values = ReadValues(tree, variable);
  switch (GetFormat()) {
    case DumpFormat::Text:
      return WriteLines(values, ' ', output);
    case DumpFormat::Csv:
      return WriteCsv(values, output);
    case DumpFormat::Npy:
      return WriteNpy(values, output);
    case DumpFormat::Json:
      break;
  }
  Json document = *StartDocument();
  document["node"] = {{"id", entry.mId}, {"name", JsonText(geometry.GetName())}};
  document["result"] = {{"position", position},
                        {"name", JsonText(variable.mName)},
                        {"type", values.mIntegers ? "u32" : "f32"},
                        {"width", variable.mValues.GetWidth()},
                        {"count", values.GetNumItems()}};
  WriteJson(document, values, output);
}

}  // namespace

std::unique_ptr<Command> MakeDumpCommand() { return std::make_unique<DumpCommand>(); }

}  // namespace Qov::Tools
