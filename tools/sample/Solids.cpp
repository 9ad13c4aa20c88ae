#include "sample/Solids.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <memory>
#include <numbers>
#include <string>
#include <utility>

#include "sample/Part.h"

namespace Qov::Tools {
namespace {

using QovRyx::Vector3;

constexpr float kCell = 2.5F;  // mm
constexpr double kSecondsPerStep = 0.01;
constexpr std::size_t kTetrahedraPerCell = 5;
constexpr QovRyx::ColourValue kGreen{0.35F, 0.6F, 0.4F, 1.0F};

/// Corners of a cell as bits: 1 is x, 2 is y, 4 is z.
using CellCorners = std::initializer_list<std::uint32_t>;
constexpr CellCorners kHexahedron = {0, 1, 3, 2, 4, 5, 7, 6};
/// Neighbouring cells are split in mirrored ways, so that their diagonals match.
constexpr std::array<CellCorners, 2> kTetrahedra{
    {{0, 1, 3, 5, 0, 3, 2, 6, 0, 5, 6, 4, 3, 6, 5, 7, 0, 3, 6, 5},
     {1, 3, 2, 7, 1, 2, 0, 4, 1, 7, 4, 5, 2, 4, 7, 6, 1, 2, 4, 7}}};

bool IsTetrahedral(std::size_t part) { return part % 2 == 1; }

template <class Visitor>
void ForEachGridPoint(std::size_t n, Visitor visit) {
  for (std::size_t z = 0; z < n; ++z) {
    for (std::size_t y = 0; y < n; ++y) {
      for (std::size_t x = 0; x < n; ++x) visit(x, y, z);
    }
  }
}

Mesh MakeSolid(std::size_t n, bool tetrahedral) {
  Mesh mesh;
  mesh.mNumCorners = tetrahedral ? 4 : 8;
  ForEachGridPoint(n + 1, [&mesh](std::size_t x, std::size_t y, std::size_t z) {
    const auto at = [](std::size_t i) { return kCell * static_cast<float>(i); };
    mesh.mPoints.push_back({at(x), at(y), at(z)});
  });
  ForEachGridPoint(n, [&](std::size_t x, std::size_t y, std::size_t z) {
    for (const std::uint32_t c : tetrahedral ? kTetrahedra[(x + y + z) % 2] : kHexahedron) {
      const std::size_t layer = (z + (c >> 2)) * (n + 1) + y + (c >> 1 & 1);
      mesh.mCorners.push_back(static_cast<std::uint32_t>(layer * (n + 1) + x + (c & 1)));
    }
  });
  return mesh;
}

/// Pseudo-random numbers between -1 and 1, the same in every run.
class Noise {
 public:
  explicit Noise(std::uint64_t seed) : mState(seed) {}

  double Next() {
    std::uint64_t z = mState += 0x9E3779B97F4A7C15U;
    z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9U;
    z = (z ^ z >> 27) * 0x94D049BB133111EBU;
    return static_cast<double>((z ^ z >> 31) >> 11) / 4503599627370496.0 - 1.0;
  }

 private:
  std::uint64_t mState;
};

/// A standing wave in a block with edges of that length.
class Wave {
 public:
  Wave(double length, std::size_t loadCase, double time)
      : mFactor(std::numbers::pi * static_cast<double>(1 + loadCase % 4) / length),
        mPhase(40.0 * time + static_cast<double>(loadCase)) {}

  double Displacement(const Vector3& p, double along) const {
    return 0.8 * std::sin(mFactor * along) * std::cos(mPhase + 0.01 * (p.mY + p.mZ));
  }
  double Speed(const Vector3& p, double along) const {
    return -32.0 * std::sin(mFactor * along) * std::sin(mPhase + 0.01 * (p.mX + p.mZ));
  }
  double Stress(const Vector3& p) const {
    return 168.0 * std::abs(mFactor * std::cos(mFactor * p.mX) * std::cos(mPhase + 0.01 * p.mY));
  }
  double Temperature(const Vector3& p) const {
    return 20.0 + 3.0 * std::exp(-0.02 * p.mZ) * (1 + std::sin(mFactor * p.mX + mPhase));
  }

 private:
  double mFactor;
  double mPhase;
};

/// Adds results of points, with the values of `solution(point)` or `solution(point, coordinate)`.
class ResultMaker {
 public:
  ResultMaker(QovRyx::Geometry& geometry, const Mesh& mesh, std::string loadCase, Noise noise)
      : mGeometry(geometry), mMesh(mesh), mLoadCase(std::move(loadCase)), mNoise(noise) {}

  template <class Solution>
  void AddVectors(const std::string& name, const std::string& unit, Solution solution) {
    Field values;
    values.reserve(3 * mMesh.mPoints.size());
    for (const Vector3& p : mMesh.mPoints) {
      for (const float along : {p.mX, p.mY, p.mZ}) values.push_back(Blur(solution(p, along)));
    }
    AddVector(mGeometry, FullName(name), values, unit);
  }
  template <class Solution>
  void AddScalars(const std::string& name, const std::string& unit, Solution solution) {
    Field values;
    values.reserve(mMesh.mPoints.size());
    for (const Vector3& p : mMesh.mPoints) values.push_back(Blur(solution(p)));
    AddScalar(mGeometry, FullName(name), values, unit);
  }

 private:
  /// Replaces about the last ten of the 24 bits by noise.
  float Blur(double value) {
    constexpr double kNoise = 1.0 / (1 << 14);
    return static_cast<float>(value * (1 + kNoise * mNoise.Next()));
  }
  std::string FullName(const std::string& name) const {
    return mLoadCase.empty() ? name : InstanceName(name, mLoadCase);
  }

  QovRyx::Geometry& mGeometry;
  const Mesh& mMesh;
  std::string mLoadCase;
  Noise mNoise;
};

void AddResults(ResultMaker results, const Wave& wave) {
  results.AddVectors("Displacement", "mm", [&wave](const Vector3& p, double along) {
    return wave.Displacement(p, along);
  });
  results.AddVectors("Velocity", "mm/s",
                     [&wave](const Vector3& p, double along) { return wave.Speed(p, along); });
  results.AddScalars("Stress", "MPa", [&wave](const Vector3& p) { return wave.Stress(p); });
  results.AddScalars("Temperature", "C", [&wave](const Vector3& p) { return wave.Temperature(p); });
}

void AddCases(QovRyx::Geometry& geometry, const Mesh& mesh, const SolidsPlan& plan,
              std::uint32_t step, std::uint64_t part) {
  const double length = kCell * static_cast<double>(plan.mSize);
  for (std::size_t i = 0; i < std::max<std::size_t>(plan.mNumCases, 1); ++i) {
    const std::string name = plan.mNumCases == 0 ? "" : fmt::format("LC{}", i + 1);
    const Noise noise(((std::uint64_t{step} << 20) + part) << 20 | i);
    AddResults({geometry, mesh, name, noise}, Wave(length, i, step * kSecondsPerStep));
  }
}

std::uint32_t AddPlace(QovRyx::Tree& tree, const std::string& name, float x) {
  auto group = MakeGroup(name, {});
  group->mTranslation = {x, 0.0F, 0.0F};
  return AddNode(tree, QovRyx::NodeTree::kRootId, std::move(group));
}

}  // namespace

bool SolidsPlan::HasIdsForAll() const {
  const double cells = std::pow(static_cast<double>(mSize + 1), 3);
  return cells * static_cast<double>(mNumParts * kTetrahedraPerCell) <
         std::numeric_limits<std::uint32_t>::max();
}

void BuildSolids(QovRyx::Tree& tree, const SolidsPlan& plan, std::uint32_t step) {
  std::array meshes = {MakeSolid(plan.mSize, false), MakeSolid(plan.mSize, true)};
  std::uint32_t nextElement = 1;
  std::uint32_t nextNode = 1;
  for (std::size_t part = 0; part < plan.mNumParts; ++part) {
    Mesh& mesh = meshes[IsTetrahedral(part) ? 1 : 0];
    mesh.mFirstNodeId =
        std::exchange(nextNode, nextNode + static_cast<std::uint32_t>(mesh.mPoints.size()));
    mesh.mFirstElementId =
        std::exchange(nextElement, nextElement + static_cast<std::uint32_t>(mesh.GetNumElements()));
    const std::string name = fmt::format("Solid {}", part + 1);
    auto geometry = MakeGeometry(name, mesh);
    AddCases(*geometry, mesh, plan, step, part);
    const float place = 1.5F * kCell * static_cast<float>(plan.mSize * part);
    AddShape(tree, AddPlace(tree, name, place), kGreen, std::move(geometry));
  }
}

}  // namespace Qov::Tools
