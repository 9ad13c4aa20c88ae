// Writes a model from scratch: a strip of quadrilaterals that bends under two loads.

#include <Qov/Ryx/InstanceNames.h>
#include <Qov/Ryx/OutputSettings.h>
#include <Qov/Ryx/Tree.h>

#include <cstdint>
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using QovRyx::Geometry;
using QovRyx::NumericArray;

/// The kinds by which readers know what an array means.
enum Kind : std::uint32_t {
  kCoordinates = 0,
  kConnectivity = 4,
  kPolylength = 5,
  kNodeIds = 6,
  kElementIds = 9,
  kScalar = 12,
  kVector = 13
};

constexpr std::uint32_t kNumElements = 20;
constexpr std::uint32_t kNumNodes = 2 * (kNumElements + 1);
constexpr float kSize = 5.0F;  // size of an element, in mm

/// Adds a node as the last child of `parent`. Returns its id.
std::uint32_t Add(QovRyx::Tree& tree, std::uint32_t parent, QovRyx::NodePointer node) {
  tree.GetNodes().SetCurrentId(parent);
  return tree.GetNodes().AddChild(std::move(node)).mId;
}

/// Adds an array of `width` values for each node or element.
template <class T>
void AddArray(Geometry& geometry, const std::string& name, Kind kind, std::uint8_t width,
              const std::vector<T>& values) {
  Geometry::VarStruct result;
  result.mName = name;
  result.mKind = kind;
  result.mValues = NumericArray::Of(values, width);
  geometry.AppendVariable(std::move(result));
}

/// Adds the arrays of the mesh. Nodes 2k and 2k + 1 are below each other, at k elements from the
/// clamped end.
void AddMesh(Geometry& geometry) {
  std::vector<float> coordinates;
  std::vector<std::uint32_t> nodeIds;
  for (std::uint32_t node = 0; node < kNumNodes; ++node) {
    const auto column = static_cast<float>(node / 2);
    coordinates.insert(coordinates.end(), {kSize * column, node % 2 == 0 ? 0.0F : kSize, 0.0F});
    nodeIds.push_back(node + 1);
  }
  std::vector<std::uint32_t> connectivity;  // positions of the nodes of each element, from 0
  std::vector<std::uint32_t> elementIds;
  for (std::uint32_t element = 0; element < kNumElements; ++element) {
    const std::uint32_t first = 2 * element;
    connectivity.insert(connectivity.end(), {first, first + 2, first + 3, first + 1});
    elementIds.push_back(element + 1);
  }
  AddArray(geometry, "Coordinates", kCoordinates, 3, coordinates);
  AddArray(geometry, "Connectivity", kConnectivity, 1, connectivity);
  AddArray(geometry, "Polylength", kPolylength, 1, std::vector<std::uint32_t>(kNumElements, 4));
  AddArray(geometry, "Node Ids", kNodeIds, 1, nodeIds);
  AddArray(geometry, "Element IDs", kElementIds, 1, elementIds);
}

/// Adds the results of a load case.
void AddLoadCase(Geometry& geometry, const std::string& name, float load) {
  const std::string part = QovRyx::kInstanceSeparator + name;
  const float length = kSize * kNumElements;
  std::vector<float> displacement;
  std::vector<float> moment;
  for (std::uint32_t node = 0; node < kNumNodes; ++node) {
    const float x = kSize * static_cast<float>(node / 2);
    displacement.insert(displacement.end(), {0.0F, 0.0F, -1e-6F * load * x * x * (3 * length - x)});
    moment.push_back(load * (length - x));
  }
  AddArray(geometry, "Displacement" + part, kVector, 3, displacement);
  AddArray(geometry, "Moment" + part, kScalar, 1, moment);
  geometry.EditVariable(geometry.GetVariables().size() - 1).mAttributes["unit"] =
      std::string("Nmm");
}

void WriteStrip(const std::string& path) {
  QovRyx::Tree tree("write", "1.0", false);  // the program that the history names
  auto group = std::make_unique<QovRyx::Group>("Strip");
  group->mAttributes = {{"unit", std::string("mm")}};
  const std::uint32_t strip = Add(tree, QovRyx::NodeTree::kRootId, std::move(group));
  const std::uint32_t shape = Add(tree, strip, std::make_unique<QovRyx::Shape>("Skin"));
  auto geometry = std::make_unique<Geometry>("Skin");
  AddMesh(*geometry);
  AddLoadCase(*geometry, "LC1", 1.0F);
  AddLoadCase(*geometry, "LC2", 2.5F);
  Add(tree, shape, std::move(geometry));
  auto sets = std::make_unique<QovRyx::NodeSets>("Sets");
  sets->SetSets({{"Clamped end", {1, 2}}, {"Free end", {kNumNodes - 1, kNumNodes}}});
  Add(tree, strip, std::move(sets));
  QovRyx::OutputSettings settings;
  settings.mLevel = 9;
  tree.Save(path, "", settings);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "Usage: write OUTPUT\n";
    return 1;
  }
  try {
    WriteStrip(argv[1]);
  } catch (const std::exception& error) {
    std::cerr << error.what();
    return 2;
  }
}
