#include <fmt/format.h>
#include <unistd.h>

#include <CLI/App.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <deque>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "Command.h"
#include "ErrorText.h"
#include "Plural.h"
#include "Qov/Util/Raise.h"
#include "SafeOutput.h"
#include "Suggestion.h"
#include "diagnostics/Printable.h"
#include "ledger/MergeRequest.h"
#include "picture/DrawPicture.h"
#include "picture/ModelView.h"
#include "picture/PictureOptions.h"
#include "picture/PngFile.h"
#include "picture/TerminalPicture.h"

namespace Qov::Tools {
namespace {

using ErrorType = Util::Exception::ErrorType;

constexpr const char* kSource = "tools/Picture";
/// Notes that a run prints; --json has all of them.
constexpr std::size_t kMostNotes = 20;
constexpr const char* kFooter =
    "Without -o, the picture appears in the terminal, if that shows images (kitty or sixel\n"
    "graphics).\n"
    "\n"
    "Views are front, back, left, right, top, bottom, iso, or a view of the model, by name or\n"
    "number; 0 is the current one. A view of the model also hides and moves parts, and names the\n"
    "result. The file does not say what the numbers of a view mean; the manual page says how they\n"
    "are used.\n"
    "\n"
    "--sheet draws all chosen results and steps, of one or several models, into one image. --diff\n"
    "draws the values of the second model minus those of the first and marks the largest\n"
    "difference; both need the same meshes.\n"
    "\n"
    "Exit status: 0 everything chosen is drawn, 1 some of it cannot be drawn, 2 failure.\n"
    "\n"
    "Example: ryx picture plate.ryx -o plate.png --result Stress --step LC2\n"
    "         ryx picture plate.ryx -o bent.png --deform Displacement --edges --view front\n"
    "         ryx picture assembly.ryx -o panels.png --nodes 'Panel*' --size 800x600\n"
    "         ryx picture plate.ryx -o steps.png --sheet --result Stress --result Displacement\n"
    "         ryx picture --diff plate.ryx braking.ryx -o diff.png --result Stress";

/// Returns true if a model cannot be read because the file is a view-point file.
bool IsWithoutModel(const std::string& path, const std::exception& error) {
  const auto* raised = dynamic_cast<const Util::Exception*>(&error);
  return IsViewPointFile(path) && raised != nullptr &&
         raised->GetType() == ErrorType::ElementNotFound;
}

class PictureCommand : public Command {
 public:
  const char* GetName() const override { return "picture"; }
  const char* GetSummary() const override { return "Draw a model into a PNG file or the terminal"; }
  const char* GetFooter() const override { return kFooter; }
  void Declare(CLI::App& app) override;
  int Run(Output& output, Output& errors) override;

 private:
  void CheckOptions() const;
  void ChooseTerminal();
  bool LoadModels(Output& errors);
  Image Draw(PictureReport& report) const;
  void Save(const Image& image, PictureReport& report) const;
  void Print(const PictureReport& report, Output& output, Output& errors) const;

  std::vector<std::string> mPaths;
  std::string mOutputPath;
  PictureOptions mOptions;
  PictureRequest mRequest;
  TerminalGraphics mGraphics = TerminalGraphics::None;
  bool mSheet = false;
  bool mDiff = false;
  bool mOverwrite = false;
  bool mJson = false;
  std::deque<QovRyx::Tree> mTrees;
};

void PictureCommand::Declare(CLI::App& app) {
  app.add_option("MODEL", mPaths, "Model file; --diff takes two, --sheet any number")->required();
  app.add_option("-o,--output", mOutputPath, "PNG file to write")->type_name("OUT");
  mOptions.Declare(app);
  CLI::Option* sheet = app.add_flag("--sheet", mSheet, "Draw all chosen results and steps");
  app.add_flag("--diff", mDiff, "Draw the difference between two models")->excludes(sheet);
  app.add_flag("--overwrite", mOverwrite, "Replace an existing file");
  app.add_flag("--json", mJson, "Print one JSON document");
}

void PictureCommand::CheckOptions() const {
  const auto refuse = [](const std::string& text) {
    Util::Raise(kSource, ErrorType::InvalidMethod, text);
  };
  if (mDiff && mPaths.size() != 2) refuse("--diff takes two models");
  if (mDiff && mRequest.mResults.empty()) refuse("--diff needs the --result to compare");
  if (!mDiff && !mSheet && mPaths.size() > 1) refuse("several models need --sheet or --diff");
  if (!mSheet && mRequest.mResults.size() > 1) refuse("several results need --sheet");
  if (mOutputPath.empty()) {
    if (mJson) refuse("--json needs -o OUT.png");
    return;
  }
  if (!Lower(mOutputPath).ends_with(".png")) {
    Util::Raise(kSource, ErrorType::FormatNotSupported,
                "a picture is a PNG file: end the name of the output with .png, not " +
                    Util::Quote(mOutputPath));
  }
  for (const std::string& path : mPaths) {
    std::error_code error;
    if (!std::filesystem::equivalent(mOutputPath, path, error)) continue;
    Util::Raise(kSource, ErrorType::MiscellaneousError,
                Util::Quote(mOutputPath) + " is the model itself; choose another output");
  }
}

void PictureCommand::ChooseTerminal() {
  if (!mOutputPath.empty()) return;
  const auto refuse = [](const char* text) {
    Util::Raise(kSource, ErrorType::InvalidMethod, text);
  };
  if (::isatty(STDOUT_FILENO) != 1) {
    refuse("standard output is not a terminal: name the file to write with -o OUT.png");
  }
  mGraphics = DetectGraphics(STDOUT_FILENO);
  if (mGraphics == TerminalGraphics::None) {
    refuse("this terminal does not show images: name the file to write with -o OUT.png");
  }
  if (mOptions.HasSize()) return;
  const PixelSize size = FitTerminal(STDOUT_FILENO, {mRequest.mWidth, mRequest.mHeight});
  mRequest.mWidth = size.mWidth;
  mRequest.mHeight = size.mHeight;
}

/// Reads the models. Returns false after an error.
bool PictureCommand::LoadModels(Output& errors) {
  using QovRyx::Tree;
  const auto mode = ModelView::IsSaved(mRequest.mView) ? Tree::ReadMode::Everything
                                                       : Tree::ReadMode::WithoutViews;
  for (const std::string& path : mPaths) {
    try {
      Tree::IdMap ids;
      mTrees.emplace_back(false).Load(path, ids, mode, Tree::SupportedFileFormats::Ryx);
    } catch (const std::exception& error) {
      const TextStyle& style = errors.GetStyle();
      const std::string text = IsWithoutModel(path, error)
                                   ? "is a view-point file, which has no geometry; give a model"
                                   : FileErrorText(path, error);
      errors.Line(fmt::format("ryx picture: {}: {}", Escape(path, style), Escape(text, style)));
      return false;
    }
  }
  return true;
}

Image PictureCommand::Draw(PictureReport& report) const {
  std::vector<NamedModel> models;
  for (std::size_t i = 0; i < mPaths.size(); ++i) {
    models.push_back({mTrees[i], std::filesystem::path(mPaths[i]).stem().string()});
  }
  if (mDiff) return DrawDifference(models[0], models[1], mRequest, report);
  if (mSheet) return DrawSheet(models, mRequest, report);
  return DrawPicture(models[0], mRequest, report);
}

void PictureCommand::Save(const Image& image, PictureReport& report) const {
  SafeOutput file(mOutputPath, mOverwrite);
  file.Write(EncodePng(image));
  report.mNumBytes = file.GetPosition();
  file.Commit();
}

void PictureCommand::Print(const PictureReport& report, Output& output, Output& errors) const {
  if (mJson) return output.Line(FormatJson(PictureJson(report)));
  const auto& notes = report.mNotes;
  for (std::size_t i = 0; i < std::min(notes.size(), kMostNotes); ++i) {
    errors.Line("ryx picture: " + notes[i]);
  }
  if (notes.size() > kMostNotes) {
    errors.Line(fmt::format("ryx picture: and {}; --json shows all",
                            Plural(notes.size() - kMostNotes, "further note")));
  }
  if (!mOutputPath.empty()) PrintSummary(report, output);
}

int PictureCommand::Run(Output& output, Output& errors) {
  try {
    mRequest = mOptions.MakeRequest();
    CheckOptions();
    ChooseTerminal();
    if (!LoadModels(errors)) return kTrouble;
    QovJbf::RemoveOutputsOnSignals();
    PictureReport report;
    report.mPath = mOutputPath;
    const Image image = Draw(report);
    if (mOutputPath.empty()) {
      output.Write(EncodeForTerminal(image, mGraphics));
    } else {
      Save(image, report);
    }
    Print(report, output, errors);
    return report.mIsComplete ? kSuccess : kIncomplete;
  } catch (const std::exception& error) {
    errors.Line("ryx picture: " + DescribeError(error, errors.GetStyle()));
    return kTrouble;
  }
}

}  // namespace

std::unique_ptr<Command> MakePictureCommand() { return std::make_unique<PictureCommand>(); }

}  // namespace Qov::Tools
