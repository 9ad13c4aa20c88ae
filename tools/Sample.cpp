#include <fmt/format.h>

#include <CLI/App.hpp>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>

#include "Command.h"
#include "OptionValues.h"
#include "Qov/Util/Raise.h"
#include "ViewPointFile.h"
#include "sample/Assembly.h"
#include "sample/Plate.h"
#include "sample/Solids.h"
#include "sample/Views.h"

namespace Qov::Tools {
namespace {

namespace fs = std::filesystem;
using QovRyx::Tree;

constexpr const char* kSource = "tools/Sample";

constexpr const char* kFooter =
    "Writes plate.ryx and plate_more_load.ryx (one mesh, two load cases each), plate.vpt (view\n"
    "points), steps/run1.ryx to run12.ryx (one mesh, twelve time steps) and assembly.ryx (25\n"
    "parts) into DIR. Creates DIR if needed. Overwrites files of these names.\n"
    "\n"
    "With an option it writes run1.ryx to runN.ryx instead, the time steps of a model of solid\n"
    "parts. A part has about one million bytes of arrays at size 20, and 8 times as many at size\n"
    "40. Only with --cases the names of results contain a load case.\n"
    "\n"
    "Example: ryx sample models\n"
    "         ryx sample models --size 40 --parts 3 --steps 10";

constexpr std::uint32_t kNumSteps = 12;
constexpr double kSecondsPerStep = 5.0;

class SampleCommand : public Command {
 public:
  const char* GetName() const override { return "sample"; }
  const char* GetSummary() const override { return "Write sample models"; }
  const char* GetFooter() const override { return kFooter; }
  void Declare(CLI::App& app) override {
    app.add_option("DIR", mDirectory, "Folder for the models")->required();
    DeclareSize(app, "--size", mSolids.mSize, "Cells along the edge of a part");
    DeclareSize(app, "--parts", mSolids.mNumParts, "Parts in a model");
    DeclareSize(app, "--steps", mNumSteps, "Time steps, one file each");
    DeclareSize(app, "--cases", mSolids.mNumCases, "Load cases in a file");
  }
  int Run(Output& output, Output& errors) override;

 private:
  template <class Number>
  void DeclareSize(CLI::App& app, const char* name, Number& number, const char* help) {
    constexpr int kMost = 1000000;
    app.add_option(name, number, help)
        ->option_text("N")
        ->transform(WholeNumber())
        ->check(CLI::Range(1, kMost))
        ->each([this](const std::string&) { mHasSize = true; });
  }

  std::string mDirectory;
  bool mHasSize = false;
  SolidsPlan mSolids;
  std::uint32_t mNumSteps = kNumSteps;
};

/// Raises an error for a symbolic link, because the file would be written outside the directory.
void RefuseLink(const fs::path& path) {
  if (!fs::is_symlink(path)) return;
  Util::Raise(kSource, Util::Exception::ErrorType::MiscellaneousError,
              path.string() + " is a symbolic link; remove it or choose another folder");
}

/// Writes samples into a directory and prints their paths.
class SampleWriter {
 public:
  SampleWriter(fs::path directory, Output& output)
      : mDirectory(std::move(directory)), mOutput(output) {}

  void WriteModel(const fs::path& name, const std::function<void(Tree&)>& build) {
    const fs::path path = Prepare(name);
    Tree tree("ryx sample", QOV_TOOLS_VERSION, false);
    build(tree);
    tree.Save(path.string(), true, "A sample", Tree::SupportedFileFormats::Ryx);
    mOutput.Line(Escape(path.string(), mOutput.GetStyle()));
  }
  void WriteViews(const fs::path& name) {
    const fs::path path = Prepare(name);
    Tree tree(false);
    AddViews(tree, "plate", "Skin");
    SaveViewPointFile(tree, path.string());
    mOutput.Line(Escape(path.string(), mOutput.GetStyle()));
  }

 private:
  fs::path Prepare(const fs::path& name) const {
    fs::path path = mDirectory / name;
    if (name.has_parent_path()) RefuseLink(path.parent_path());
    RefuseLink(path);
    fs::create_directories(path.parent_path());
    return path;
  }

  fs::path mDirectory;
  Output& mOutput;
};

void WriteFamily(SampleWriter& writer) {
  const auto cases = PlateLoadCases();
  writer.WriteModel("plate.ryx", [&](Tree& tree) { BuildPlate(tree, {cases[0], cases[1]}); });
  writer.WriteModel("plate_more_load.ryx", [&](Tree& tree) {
    BuildPlate(tree, {cases[2], cases[3]});
  });
  writer.WriteViews("plate.vpt");
  for (std::uint32_t step = 1; step <= kNumSteps; ++step) {
    writer.WriteModel(fmt::format("steps/run{}.ryx", step),
                      [&](Tree& tree) { BuildHeatedPlate(tree, step * kSecondsPerStep); });
  }
  writer.WriteModel("assembly.ryx", BuildAssembly);
}

void WriteSolids(SampleWriter& writer, const SolidsPlan& plan, std::uint32_t numSteps) {
  if (!plan.HasIdsForAll()) {
    Util::Raise(kSource, Util::Exception::ErrorType::OutOfBounds,
                "too many elements: their ids would need more than 32 bits; use a smaller --size "
                "or --parts");
  }
  for (std::uint32_t step = 1; step <= numSteps; ++step) {
    writer.WriteModel(fmt::format("run{}.ryx", step),
                      [&](Tree& tree) { BuildSolids(tree, plan, step); });
  }
}

int SampleCommand::Run(Output& output, Output& /*errors*/) {
  SampleWriter writer(mDirectory, output);
  if (mHasSize) {
    WriteSolids(writer, mSolids, mNumSteps);
  } else {
    WriteFamily(writer);
  }
  return kSuccess;
}

}  // namespace

std::unique_ptr<Command> MakeSampleCommand() { return std::make_unique<SampleCommand>(); }

}  // namespace Qov::Tools
