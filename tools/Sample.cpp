#include <fmt/format.h>

#include <filesystem>
#include <functional>
#include <string>

#include "Command.h"
#include "Qov/Util/Raise.h"
#include "ViewPointFile.h"
#include "sample/Assembly.h"
#include "sample/Plate.h"
#include "sample/Views.h"

namespace Qov::Tools {
namespace {

namespace fs = std::filesystem;
using QovRyx::Tree;

constexpr const char* kFooter =
    "Writes plate.ryx and plate_more_load.ryx (one mesh, two load cases each), plate.vpt (view\n"
    "points), steps/run1.ryx to run12.ryx (one mesh, twelve time steps) and assembly.ryx (25\n"
    "parts) into DIR, which is made if it is not there. Files of these names are overwritten.\n"
    "\n"
    "Example: ryx sample models";

constexpr int kNumSteps = 12;
constexpr double kSecondsAStep = 5.0;

class SampleCommand : public Command {
 public:
  const char* GetName() const override { return "sample"; }
  const char* GetSummary() const override { return "Write models to try things out on"; }
  const char* GetFooter() const override { return kFooter; }
  void Declare(CLI::App& app) override {
    app.add_option("DIR", mDirectory, "Where the models go")->required();
  }
  int Run(Output& output, Output& errors) override;

 private:
  std::string mDirectory;
};

/// A link would lead the writing out of the directory.
void RefuseLink(const fs::path& path) {
  if (!fs::is_symlink(path)) return;
  Util::Raise("tools/Sample", Util::Exception::ErrorType::MiscellaneousError,
              path.string() + " is a symbolic link and is not written through");
}

/// Writes samples into a directory and says so.
class SampleWriter {
 public:
  SampleWriter(const fs::path& directory, Output& output)
      : mDirectory(directory), mOutput(output) {}

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

int SampleCommand::Run(Output& output, Output& /*errors*/) {
  SampleWriter writer(mDirectory, output);
  const auto cases = PlateLoadCases();
  writer.WriteModel("plate.ryx", [&](Tree& tree) { BuildPlate(tree, {cases[0], cases[1]}); });
  writer.WriteModel("plate_more_load.ryx", [&](Tree& tree) {
    BuildPlate(tree, {cases[2], cases[3]});
  });
  writer.WriteViews("plate.vpt");
  for (int step = 1; step <= kNumSteps; ++step) {
    writer.WriteModel(fmt::format("steps/run{}.ryx", step),
                      [&](Tree& tree) { BuildHeatedPlate(tree, step * kSecondsAStep); });
  }
  writer.WriteModel("assembly.ryx", BuildAssembly);
  return kSuccess;
}

}  // namespace

std::unique_ptr<Command> MakeSampleCommand() { return std::make_unique<SampleCommand>(); }

}  // namespace Qov::Tools
