#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "support/ModelBuilder.h"
#include "support/OldFile.h"
#include "support/RandomModel.h"
#include "support/RecordTypes.h"

/// Writes the small inputs that fuzzing starts from: MakeSeeds FOLDER. Each target has a folder.
/// fuzz/corpus holds them together with inputs that fuzzing found.
namespace {

using namespace Qov::Test;
using Path = std::filesystem::path;

std::string ReadFile(const Path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void WriteFile(const Path& path, const std::string& bytes) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << bytes;
}

std::string LittleEndian(std::size_t value) {
  std::string bytes;
  for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(value >> shift & 0xFF);
  return bytes;
}

/// Adds linked results and cut sections, which some merge modes treat specially.
void BuildLinks(QovRyx::Tree& tree) {
  BuildPlate(tree, {"Stress|LC1", "Mass"}, 1, 4);
  const std::uint32_t cuts = tree.GetNodes().GetNextId();
  AddNode<QovRyx::Group>(tree, QovRyx::NodeTree::kRootId, "Cut-Sections");
  AddNode<QovRyx::Shape>(tree, cuts, "Cut");
  auto& cut = AddNode<QovRyx::Geometry>(tree, cuts + 1, "Cut");
  cut.AppendVariable(MakeVariable("Heat|LC1", 12, QovRyx::NumericArray::Of(Ramp(3, 1.0F))));
  cut.AppendVariable(MakeLinked("Near|LC1", {cuts + 2, 0}));
  cut.AppendVariable(MakeLinked("Far|LC1", {PlateIds::kGeometry, 2}));
  cut.AppendVariable(MakeLinked("Lost|LC1", {99, 0}));
  QovRyx::AsGeometry(tree.GetNodes().GetReqNode(PlateIds::kGeometry))
      ->AppendVariable(MakeLinked("Heat|LC2", {cuts + 2, 0}));
}

/// Adds a cube, a concave quad and a line, with results of two steps and node sets.
void BuildCells(QovRyx::Tree& tree) {
  using QovRyx::NumericArray;
  using Integers = std::vector<std::uint32_t>;
  AddNode<QovRyx::Group>(tree, QovRyx::NodeTree::kRootId, "Cells").mAttributes["time"] = 0.5F;
  const std::uint32_t group = tree.GetNodes().GetCurrentId();
  auto& cells = AddNode<QovRyx::Geometry>(tree, group, "Cells");
  const std::vector<float> points = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0,
                                     0, 0, 1, 1, 0, 1, 1, 1, 1, 0, 1, 1};
  cells.AppendVariable(MakeVariable("Coordinates", 0, NumericArray::Of(points, 3)));
  const auto addIntegers = [&](const char* name, std::uint32_t kind, const Integers& values) {
    cells.AppendVariable(MakeVariable(name, kind, NumericArray::Of(values)));
  };
  addIntegers("Connectivity", 4, {0, 1, 2, 3, 4, 5, 6, 7, 0, 1, 5, 4, 3, 7, 0, 1, 2, 4, 3});
  addIntegers("Polylength", 5, {8, 4, 2, 5});
  addIntegers("Node Ids", 6, Count(8, 11));
  for (const char* name : {"Stress|T=1", "Stress|T=2", "Codes"}) {
    cells.AppendVariable(MakeVariable(name, 12, NumericArray::Of(Ramp(8, 1.0F))));
  }
  cells.AppendVariable(MakeVariable("Mass", 20, NumericArray::Of(Ramp(4, 1.0F))));
  cells.AppendVariable(MakeVariable("Force", 13, NumericArray::Of(Ramp(24, 1.0F), 3)));
  AddNode<QovRyx::NodeSets>(tree, group, "Sets").SetSets({{"ids", {11, 12}}, {"others", {1}}});
}

/// Returns the bytes of small models that together have every type of node.
std::vector<std::string> MakeModels(const Path& folder) {
  std::vector<std::string> models;
  const std::string path = folder / "seed.ryx";
  SavePlate(path, {"Stress|LC1", "Stress|LC2"}, 1, 4);
  models.push_back(ReadFile(path));
  SavePlate(path, {"Stress|LC1", "Heat"}, 2, 4);
  models.push_back(ReadFile(path));
  for (const std::uint32_t seed : {3U, 8U}) {
    QovRyx::Tree tree(false);
    RandomModel(seed).Fill(tree);
    SaveTree(tree, path);
    models.push_back(ReadFile(path));
  }
  SaveOldestModel(path);
  models.push_back(ReadFile(path));
  QovRyx::Tree links(false);
  BuildLinks(links);
  SaveTree(links, path);
  models.push_back(ReadFile(path));
  std::filesystem::remove(path);
  return models;
}

std::string MakeCells(const Path& folder) {
  const std::string path = folder / "seed.ryx";
  QovRyx::Tree tree(false);
  BuildCells(tree);
  SaveTree(tree, path);
  std::string model = ReadFile(path);
  std::filesystem::remove(path);
  return model;
}

std::string MakeViews(const Path& folder) {
  const std::string path = folder / "seed.vpt";
  SaveViewPointFile(path, "Walk");
  std::string views = ReadFile(path);
  std::filesystem::remove(path);
  return views;
}

template <class Record>
std::string RecordBytes() {
  QovJbf::Block block;
  CopyToBlock(block, Record());
  return {reinterpret_cast<const char*>(block.GetData()), block.GetSize()};
}

/// Writes one record of each type, with the type number that the target uses and the current file
/// version.
template <class... Records>
struct RecordWriter {
  static void Write(const Path& folder) {
    char number = 0;
    const auto write = [&](const std::string& bytes) {
      WriteFile(folder / ("record" + std::to_string(number)), number + ("\x0C" + bytes));
      ++number;
    };
    (write(RecordBytes<Records>()), ...);
  }
};

void WriteSeeds(const Path& folder) {
  std::filesystem::create_directories(folder);
  const std::vector<std::string> models = MakeModels(folder);
  for (std::size_t i = 0; i < models.size(); ++i) {
    const std::string name = "model" + std::to_string(i);
    for (const char* target : {"container", "model", "check", "export"}) {
      WriteFile(folder / target / name, models[i]);
    }
    const std::string pair = LittleEndian(models[i].size()) + models[i] + models[(i + 1) % 2];
    WriteFile(folder / "diff" / name, pair);
    for (char mode = 0; mode < 6; ++mode) {
      const std::string mergeName = name + "_" + std::to_string(mode);
      if (i == 0 || mode == 0) WriteFile(folder / "merge" / mergeName, mode + pair);
    }
  }
  const std::string& links = models.back();
  for (char mode = 1; mode < 9; ++mode) {
    WriteFile(folder / "merge" / ("links" + std::to_string(mode)),
              mode + LittleEndian(links.size()) + links + links);
  }
  WriteFile(folder / "export" / "cells", MakeCells(folder));
  const std::string views = MakeViews(folder);
  for (const char* target : {"container", "views", "check"}) {
    WriteFile(folder / target / "views", views);
  }
  EveryRecordIn<RecordWriter>::Write(folder / "records");
}

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): an exception ends the program and is reported
int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "Usage: MakeSeeds FOLDER\n";
    return 2;
  }
  WriteSeeds(argv[1]);
}
