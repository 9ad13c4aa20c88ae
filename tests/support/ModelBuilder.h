#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Qov/Ryx/Tree.h"

/// Small models, built in memory.
namespace Qov::Test {

/// Replaces each bar, as in "Stress|LC1", by the separator of instance parts.
inline std::string Barred(std::string text) {
  std::replace(text.begin(), text.end(), '|', '\x1E');
  return text;
}
inline std::string Unbarred(std::string text) {
  std::replace(text.begin(), text.end(), '\x1E', '|');
  return text;
}

/// Adds a node below `parent` and returns it.
template <class T>
T& AddNode(QovRyx::Tree& tree, std::uint32_t parent, std::unique_ptr<T> node) {
  T& added = *node;
  tree.GetNodes().SetCurrentId(parent);
  tree.GetNodes().AddChild(std::move(node));
  return added;
}
template <class T>
T& AddNode(QovRyx::Tree& tree, std::uint32_t parent, const std::string& name) {
  return AddNode(tree, parent, std::make_unique<T>(name));
}

inline QovRyx::Geometry::VarStruct MakeVariable(const std::string& name, std::uint32_t kind,
                                                QovRyx::NumericArray values) {
  QovRyx::Geometry::VarStruct variable;
  variable.mName = Barred(name);
  variable.mKind = kind;
  variable.mValues = std::move(values);
  return variable;
}

/// Returns a result that is linked to another one.
inline QovRyx::Geometry::VarStruct MakeLinked(const std::string& name, QovRyx::ResultPlace target) {
  QovRyx::Geometry::VarStruct variable = MakeVariable(name, QovRyx::Geometry::kNoKind, {});
  variable.mLink = QovRyx::ResultLink(target);
  return variable;
}

/// Returns a result of integers with values in all fields that are only carried.
inline QovRyx::Geometry::VarStruct MakeCarrier(const std::string& name, std::uint32_t start) {
  QovRyx::Geometry::VarStruct variable = MakeVariable(
      name, 12, QovRyx::NumericArray::Of(std::vector<std::uint32_t>{start, start + 1, 7, 8}, 2));
  variable.mKindHighByte = 5;
  variable.mFlag1 = 1;
  variable.mFlag2 = 2;
  variable.mValue1 = start;
  variable.mValue2 = 0xFFFFFFFF;
  variable.mFlag3 = 3;
  return variable;
}

inline std::vector<float> Ramp(std::size_t size, float start) {
  std::vector<float> values(size);
  for (std::size_t i = 0; i != size; ++i) values[i] = start + 0.5F * static_cast<float>(i);
  return values;
}

inline std::vector<std::uint32_t> Count(std::size_t size, std::uint32_t start) {
  std::vector<std::uint32_t> values(size);
  for (std::size_t i = 0; i != size; ++i) values[i] = start + static_cast<std::uint32_t>(i);
  return values;
}

/// Returns the names of all variables, with bars as separators; for links " -> NODE,VARIABLE"
/// follows.
inline std::vector<std::string> VariableTexts(const QovRyx::Geometry& geometry) {
  std::vector<std::string> texts;
  for (const QovRyx::Geometry::VarStruct& variable : geometry.GetVariables()) {
    std::string text = Unbarred(variable.mName);
    const auto [node, position] = variable.mLink.GetPlace();
    if (variable.mLink.IsLinked()) {
      text += " -> " + std::to_string(node) + "," + std::to_string(position);
    }
    texts.push_back(std::move(text));
  }
  return texts;
}

/// The ids of the nodes that BuildPlate adds to an empty tree.
struct PlateIds {
  static constexpr std::uint32_t kGroup = 2;
  static constexpr std::uint32_t kShape = 3;
  static constexpr std::uint32_t kGeometry = 4;
  static constexpr std::uint32_t kSets = 5;
};

/// Adds a group with node sets and a shape with a mesh. Each of `results` has one value for each
/// mesh node; files with different seeds have different values.
inline void BuildPlate(QovRyx::Tree& tree, const std::vector<std::string>& results,
                       std::uint32_t seed, std::size_t numNodes = 40) {
  auto& group = AddNode<QovRyx::Group>(tree, QovRyx::NodeTree::kRootId, "Plate");
  group.mAttributes = {{"mass", 4.25}, {"revision", 7U}, {"unit", std::string("mm")}};
  auto& shape = AddNode<QovRyx::Shape>(tree, PlateIds::kGroup, "Skin");
  shape.mMaterial.mValues.mScalar1 = static_cast<float>(seed);
  auto& mesh = AddNode<QovRyx::Geometry>(tree, PlateIds::kShape, "Skin");
  const auto start = static_cast<float>(seed);
  mesh.AppendVariable(
      MakeVariable("Coordinates", 0, QovRyx::NumericArray::Of(Ramp(3 * numNodes, start), 3)));
  mesh.AppendVariable(
      MakeVariable("Connectivity", 4, QovRyx::NumericArray::Of(Count(numNodes, seed))));
  for (const std::string& name : results) {
    QovRyx::Geometry::VarStruct result =
        MakeVariable(name, 12, QovRyx::NumericArray::Of(Ramp(numNodes, start + 100.0F)));
    result.mAttributes["load"] = start;
    mesh.AppendVariable(std::move(result));
  }
  auto& sets = AddNode<QovRyx::NodeSets>(tree, PlateIds::kGroup, "Sets");
  sets.SetSets({{"left", Count(5, seed)}, {"none", {}}, {"right", Count(3, seed + 20)}});
}

/// Adds a path of default view points.
inline void AddViewPointPath(QovRyx::Tree& tree, const std::string& name,
                             std::size_t numViewPoints) {
  tree.GetViewPointPaths().push_back({name, std::vector<QovRyx::ViewPoint>(numViewPoints)});
  tree.SetHasViewPoints(true);
}

inline void SaveTree(QovRyx::Tree& tree, const std::string& path) {
  tree.Save(path, true, "", QovRyx::Tree::SupportedFileFormats::Ryx);
}

inline void LoadTree(QovRyx::Tree& tree, const std::string& path) {
  QovRyx::Tree::IdMap idMap;
  tree.Load(path, idMap, QovRyx::Tree::ReadMode::Everything,
            QovRyx::Tree::SupportedFileFormats::Ryx);
}

/// Adds the model of a file to the tree.
inline void MergeFile(QovRyx::Tree& tree, const std::string& path) {
  tree.Merge(path, QovRyx::Tree::ReadMode::Everything, QovRyx::Tree::SupportedFileFormats::Ryx);
}

/// Makes the root a group that takes models, as merges do.
inline void MakeMergeRoot(QovRyx::Tree& tree) {
  auto root = std::make_unique<QovRyx::Group>("Merge");
  root->mTakesModels = 1;
  tree.GetNodes().GetCurrentNode().mData = std::move(root);
}

inline void SavePlate(const std::string& path, const std::vector<std::string>& results,
                      std::uint32_t seed, std::size_t numNodes = 40) {
  QovRyx::Tree tree("PlateMaker", "1.0", false);
  BuildPlate(tree, results, seed, numNodes);
  SaveTree(tree, path);
}

/// Writes a view-point file with one path of two view points.
inline void SaveViewPointFile(const std::string& path, const std::string& pathName) {
  QovRyx::Tree tree(false);
  AddViewPointPath(tree, pathName, 2);
  SaveTree(tree, path);
}

}  // namespace Qov::Test
