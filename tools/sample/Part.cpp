#include "sample/Part.h"

#include <array>
#include <numeric>
#include <utility>

#include "Qov/Ryx/InstanceNames.h"

namespace Qov::Tools {
namespace {

using QovRyx::Geometry;
using VarStruct = Geometry::VarStruct;

struct MeshArray {
  const char* mName;
  std::uint32_t mKind;
};

constexpr std::array<MeshArray, 5> kMeshArrays{{
    {"Coordinates", Kind::kCoordinates},
    {"Connectivity", Kind::kConnectivity},
    {"Polylength", Kind::kPolylength},
    {"Node Ids", Kind::kNodeIds},
    {"Element IDs", Kind::kElementIds},
}};

template <class T>
VarStruct MakeVariable(const std::string& name, std::uint32_t kind, const std::vector<T>& values,
                       std::uint8_t width = 1) {
  VarStruct variable;
  variable.mName = name;
  variable.mKind = kind;
  variable.mValues = QovRyx::NumericArray::Of(values, width);
  return variable;
}

std::vector<std::uint32_t> CountUp(std::uint32_t first, std::size_t n) {
  std::vector<std::uint32_t> values(n);
  std::iota(values.begin(), values.end(), first);
  return values;
}

Field Coordinates(const Mesh& mesh) {
  Field values;
  for (const auto& p : mesh.mPoints) values.insert(values.end(), {p.mX, p.mY, p.mZ});
  return values;
}

}  // namespace

std::uint32_t AddNode(QovRyx::Tree& tree, std::uint32_t parent,
                      std::unique_ptr<QovRyx::Node> node) {
  tree.GetNodes().SetCurrentId(parent);
  return tree.GetNodes().AddChild(std::move(node)).mId;
}

std::unique_ptr<QovRyx::Group> MakeGroup(const std::string& name,
                                         QovUtil::AttributeMap attributes) {
  auto group = std::make_unique<QovRyx::Group>(name);
  group->mAttributes = std::move(attributes);
  return group;
}

std::unique_ptr<Geometry> MakeGeometry(const std::string& name, const Mesh& mesh) {
  const std::size_t numElements = mesh.GetNumElements();
  auto geometry = std::make_unique<Geometry>(name);
  const auto add = [&geometry](const MeshArray& array, const auto& values, std::uint8_t width) {
    geometry->AppendVariable(MakeVariable(array.mName, array.mKind, values, width));
  };
  add(kMeshArrays[0], Coordinates(mesh), 3);
  add(kMeshArrays[1], mesh.mCorners, 1);
  add(kMeshArrays[2], std::vector<std::uint32_t>(numElements, mesh.mNumCorners), 1);
  add(kMeshArrays[3], CountUp(mesh.mFirstNodeId, mesh.mPoints.size()), 1);
  add(kMeshArrays[4], CountUp(mesh.mFirstElementId, numElements), 1);
  return geometry;
}

std::unique_ptr<Geometry> MakeLinkedGeometry(const std::string& name, std::uint32_t geometry) {
  auto linked = std::make_unique<Geometry>(name);
  std::uint32_t position = 0;
  for (const MeshArray& array : kMeshArrays) {
    VarStruct variable;
    variable.mName = array.mName;
    variable.mKind = array.mKind;
    variable.mLink = QovRyx::ResultLink({geometry, position++});
    linked->AppendVariable(std::move(variable));
  }
  return linked;
}

std::uint32_t AddShape(QovRyx::Tree& tree, std::uint32_t parent, const QovRyx::ColourValue& colour,
                       std::unique_ptr<Geometry> geometry) {
  auto shape = std::make_unique<QovRyx::Shape>(geometry->GetName());
  shape->mMaterial.mValues.mColour1 = colour;
  return AddNode(tree, AddNode(tree, parent, std::move(shape)), std::move(geometry));
}

std::string InstanceName(const std::string& base, const std::string& instance) {
  return base + QovRyx::kInstanceSeparator + instance;
}

void AddScalar(Geometry& geometry, const std::string& name, const Field& values,
               const std::string& unit) {
  VarStruct variable = MakeVariable(name, Kind::kScalar, values);
  variable.mAttributes["unit"] = unit;
  geometry.AppendVariable(std::move(variable));
}

void AddVector(Geometry& geometry, const std::string& name, const Field& values,
               const std::string& unit) {
  VarStruct variable = MakeVariable(name, Kind::kVector, values, 3);
  variable.mFlag = 1;
  variable.mAttributes["unit"] = unit;
  geometry.AppendVariable(std::move(variable));
}

}  // namespace Qov::Tools
