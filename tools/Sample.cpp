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
    "parts) into DIR, which is made if it is not there. Files of these names are overwritten.\n"
    "\n"
    "With an option it writes run1.ryx to runN.ryx instead, steps of time of one model of solid\n"
    "parts, as big as you like: a part has about one million bytes of arrays at size 20, and 8\n"
    "times as many at size 40. Results are named after a load case only if --cases is given.\n"
    "\n"
    "Example: ryx sample models\n"
    "         ryx sample models --size 40 --parts 3 --steps 10";

constexpr std::uint32_t kNumSteps = 12;
constexpr double kSecondsAStep = 5.0;

class SampleCommand : public Command {
 public:
  const char* GetName() const override { return "sample"; }
  const char* GetSummary() const override { return "Write models to try things out on"; }
  const char* GetFooter() const override { return kFooter; }
  void Declare(CLI::App& app) override {
    app.add_option("DIR", mDirectory, "Where the models go")->required();
    DeclareSize(app, "--size", mSolids.mSize, "Cells along the edge of a part");
    DeclareSize(app, "--parts", mSolids.mNumParts, "Parts in a model");
    DeclareSize(app, "--steps", mNumSteps, "Steps of time, each of which is a file");
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

/// A link would lead the writing out of the directory.
void RefuseLink(const fs::path& path) {
  if (!fs::is_symlink(path)) return;
  Util::Raise(kSource, Util::Exception::ErrorType::MiscellaneousError,
              path.string() + " is a symbolic link and is not written through");
}

/// Writes samples into a directory and says so.
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
                      [&](Tree& tree) { BuildHeatedPlate(tree, step * kSecondsAStep); });
  }
  writer.WriteModel("assembly.ryx", BuildAssembly);
}

void WriteSolids(SampleWriter& writer, const SolidsPlan& plan, std::uint32_t numSteps) {
  if (!plan.HasIdsForAll()) {
    Util::Raise(kSource, Util::Exception::ErrorType::OutOfBounds,
                "The elements of that many parts of that size cannot all have an id");
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
