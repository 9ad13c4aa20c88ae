#include "sample/Plate.h"

#include <cmath>
#include <numbers>
#include <utility>

#include "sample/Part.h"

namespace Qov::Tools {
namespace {

using QovRyx::NodeTree;
using QovRyx::Vector3;

constexpr QovRyx::ColourValue kSteel{0.55F, 0.6F, 0.66F, 1.0F};

std::unique_ptr<QovRyx::NodeSets> MakeEdgeSets(const HoledPlate& plate, const Mesh& mesh) {
  const float x = plate.mWidth / 2;
  const float y = plate.mHeight / 2;
  const float nearHole = plate.mRadius * 1.0001F;
  const auto where = [&mesh](auto predicate) { return NodeIdsWhere(mesh, predicate); };
  const auto isEnd = [x](const Vector3& p) { return std::abs(p.mX) == x; };
  const auto isSide = [y](const Vector3& p) { return std::abs(p.mY) == y; };
  auto sets = std::make_unique<QovRyx::NodeSets>("Sets");
  sets->SetSets({
      {"Left edge", where([x](const Vector3& p) { return p.mX == -x; })},
      {"Right edge", where([x](const Vector3& p) { return p.mX == x; })},
      {"Long edges", where(isSide)},
      {"Corners", where([&](const Vector3& p) { return isEnd(p) && isSide(p); })},
      {"Hole", where([&](const Vector3& p) { return std::hypot(p.mX, p.mY) < nearHole; })},
  });
  return sets;
}

/// Adds the group of the plate, with a group of its skin below it. Returns the id of the latter.
std::uint32_t AddSkin(QovRyx::Tree& tree, std::unique_ptr<QovRyx::Group> plate) {
  const std::uint32_t id = AddNode(tree, NodeTree::kRootId, std::move(plate));
  return AddNode(tree, id, MakeGroup("Skin", {{"part number", std::uint32_t{4711}}}));
}

}  // namespace

std::vector<LoadCase> PlateLoadCases() {
  constexpr double kDiagonal = 1 / std::numbers::sqrt2;
  return {
      {"LC1", {100.0, 0.0, 1.0, 0.0}},              // along
      {"LC2", {0.0, 60.0, 1.0, 0.0}},               // across
      {"LC3", {80.0, 80.0, 1.0, 0.0}},              // both ways
      {"LC4", {50.0, -30.0, kDiagonal, kDiagonal}}  // diagonal
  };
}

void BuildPlate(QovRyx::Tree& tree, const std::vector<LoadCase>& cases) {
  const HoledPlate plate;
  const Mesh mesh = plate.MakeMesh();
  auto group = MakeGroup("Plate", {{"mass", 0.1454},
                                   {"revision", std::uint32_t{3}},
                                   {"thickness", 1.5F},
                                   {"unit", std::string("mm")}});
  const std::uint32_t skin = AddSkin(tree, std::move(group));
  auto geometry = MakeGeometry("Skin", mesh);
  for (const LoadCase& load : cases) {
    AddVector(*geometry, InstanceName("Displacement", load.mName),
              DisplacementAroundHole(mesh, plate.mRadius, load.mTension), "mm");
    AddScalar(*geometry, InstanceName("Stress", load.mName),
              StressAroundHole(mesh, plate.mRadius, load.mTension), "MPa");
  }
  AddShape(tree, skin, kSteel, std::move(geometry));
  AddNode(tree, tree.GetNodes().GetReqNode(skin).mParent, MakeEdgeSets(plate, mesh));
}

void BuildHeatedPlate(QovRyx::Tree& tree, double time) {
  const Mesh mesh = MakeRectangle(120.0F, 90.0F, 40, 30);
  const std::uint32_t skin = AddSkin(tree, MakeGroup("Heated plate", {{"time", time}}));
  auto geometry = MakeGeometry("Skin", mesh);
  AddScalar(*geometry, "Temperature", Temperature(mesh, time), "C");
  AddShape(tree, skin, kSteel, std::move(geometry));
}

}  // namespace Qov::Tools
