#include "mesh/Mesh.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <utility>

#include "Qov/Util/Raise.h"
#include "mesh/MeshArrays.h"

namespace QovMesh {
namespace {

using Variable = QovRyx::Geometry::VarStruct;

/// Cells that are looked at to decide on a kind; they lie evenly among all.
constexpr std::uint64_t kSampleSize = 4096;

[[noreturn]] void Refuse(const std::string& text) {
  Qov::Util::Raise("mesh/Mesh", Qov::Util::Exception::ErrorType::MismatchError, text);
}

std::vector<std::uint32_t> LoadIntegers(const Variable& variable) {
  std::vector<std::uint32_t> values;
  variable.mValues.GetValues(values);
  if (values.size() != variable.mValues.GetNumElements()) {
    Refuse(fmt::format("the array {} shares the values of an array that does not exist",
                       variable.mName));
  }
  return values;
}

std::vector<float> LoadPoints(const MeshArrays& arrays, std::string_view instance) {
  const Variable* coordinates = arrays.Find(QovRyx::kCoordinates, instance);
  if (coordinates == nullptr) Refuse("the geometry has no array Coordinates");
  const std::size_t width = coordinates->mValues.GetWidth();
  if (width != 2 && width != 3) {
    Refuse(fmt::format("the array Coordinates has {} components, not 2 or 3", width));
  }
  std::vector<float> values;
  coordinates->mValues.GetValues(values);
  if (values.size() != coordinates->mValues.GetNumElements()) {
    Refuse("the array Coordinates shares the values of an array that does not exist");
  }
  if (values.size() % width != 0) Refuse("the array Coordinates ends within a point");
  if (width == 3) return values;
  std::vector<float> points(values.size() / 2 * 3);
  for (std::size_t i = 0; i < values.size() / 2; ++i) {
    points[3 * i] = values[2 * i];
    points[3 * i + 1] = values[2 * i + 1];
  }
  return points;
}

/// Cuts the connectivity into runs of cells with the same number of nodes.
std::vector<CellRun> CutRuns(const std::vector<std::uint32_t>& lengths, std::uint64_t numNodes) {
  std::vector<CellRun> runs;
  std::uint64_t node = 0;
  for (std::uint64_t i = 0; i < lengths.size(); ++i) {
    if (runs.empty() || runs.back().mNumNodes != lengths[i]) {
      runs.push_back({i, 0, node, lengths[i], CellKind::Empty});
    }
    ++runs.back().mNumCells;
    node += lengths[i];
  }
  if (node != numNodes) {
    Refuse(fmt::format("the lengths in Polylength add up to {}, but Connectivity has {} values",
                       node, numNodes));
  }
  return runs;
}

void CheckNodes(const Mesh& mesh) {
  const std::uint64_t numPoints = mesh.GetNumPoints();
  const auto bad = std::find_if(mesh.mNodes.begin(), mesh.mNodes.end(),
                                [&](std::uint32_t node) { return node >= numPoints; });
  if (bad == mesh.mNodes.end()) return;
  Refuse(fmt::format("value {} of Connectivity is {}, but there are {} points, from 0",
                     bad - mesh.mNodes.begin(), *bad, numPoints));
}

/// Takes every n-th cell with that number of nodes, so that at most kSampleSize cells are taken.
CellSample TakeSample(const Mesh& mesh, std::uint32_t numNodes, std::uint64_t numCells) {
  CellSample sample{numNodes, {}};
  const std::uint64_t step = (numCells + kSampleSize - 1) / kSampleSize;
  std::uint64_t next = 0;  // the cell to take, counted among those with that number of nodes
  std::uint64_t seen = 0;
  for (const CellRun& run : mesh.mRuns) {
    if (run.mNumNodes != numNodes) continue;
    for (; next < seen + run.mNumCells; next += step) {
      const auto first = mesh.mNodes.begin() +
                         static_cast<std::ptrdiff_t>(run.mFirstNode + (next - seen) * numNodes);
      sample.mNodes.insert(sample.mNodes.end(), first, first + numNodes);
    }
    seen += run.mNumCells;
  }
  return sample;
}

void CheckChoice(const KindDecision& decision) {
  if (CanHaveNodes(decision.mKind, decision.mNumNodes)) return;
  Refuse(fmt::format("a cell of the kind {} cannot have {} nodes", GetShape(decision.mKind).mName,
                     decision.mNumNodes));
}

/// Puts the nodes of all cells with that number of nodes into the order of CellShape.
void ReorderNodes(std::uint32_t numNodes, const std::vector<std::uint8_t>& order, Mesh& mesh) {
  std::vector<std::uint32_t> cell(numNodes);
  for (const CellRun& run : mesh.mRuns) {
    if (run.mNumNodes != numNodes) continue;
    for (std::uint64_t i = 0; i < run.mNumCells; ++i) {
      std::uint32_t* nodes = mesh.mNodes.data() + run.mFirstNode + i * numNodes;
      std::copy(nodes, nodes + numNodes, cell.begin());
      for (std::size_t j = 0; j < numNodes; ++j) nodes[j] = cell[order[j]];
    }
  }
}

void DecideKinds(Mesh& mesh, const KindChoices& choices) {
  std::map<std::uint32_t, std::uint64_t> counts;
  for (const CellRun& run : mesh.mRuns) counts[run.mNumNodes] += run.mNumCells;
  std::map<std::uint32_t, CellKind> kinds;
  for (const auto& [numNodes, numCells] : counts) {
    const CellSample sample = numNodes == 0 ? CellSample{} : TakeSample(mesh, numNodes, numCells);
    KindDecision decision = DecideKind(sample, mesh.mPoints, choices);
    decision.mNumCells = numCells;
    CheckChoice(decision);
    kinds[numNodes] = decision.mKind;
    if (!decision.mNodeOrder.empty()) ReorderNodes(numNodes, decision.mNodeOrder, mesh);
    mesh.mDecisions.push_back(std::move(decision));
  }
  for (CellRun& run : mesh.mRuns) run.mKind = kinds[run.mNumNodes];
}

/// Counts the cells that name a point twice.
std::uint64_t CountRepeatedNodes(const Mesh& mesh) {
  std::uint64_t count = 0;
  std::vector<std::uint32_t> sorted;
  for (const CellRun& run : mesh.mRuns) {
    for (std::uint64_t i = 0; i < run.mNumCells; ++i) {
      const auto first =
          mesh.mNodes.begin() + static_cast<std::ptrdiff_t>(run.mFirstNode + i * run.mNumNodes);
      sorted.assign(first, first + run.mNumNodes);
      std::sort(sorted.begin(), sorted.end());
      if (std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end()) ++count;
    }
  }
  return count;
}

void LoadCells(const MeshArrays& arrays, std::string_view instance, Mesh& mesh) {
  const Variable* connectivity = arrays.Find(QovRyx::kConnectivity, instance);
  if (connectivity == nullptr) {
    mesh.mWarnings.emplace_back("no array Connectivity: the mesh has points and no cells");
    return;
  }
  const Variable* lengths = arrays.Find(QovRyx::kPolylength, instance);
  if (lengths == nullptr) Refuse("the geometry has no array Polylength");
  mesh.mNodes = LoadIntegers(*connectivity);
  mesh.mRuns = CutRuns(LoadIntegers(*lengths), mesh.mNodes.size());
  CheckNodes(mesh);
  const std::uint64_t repeated = CountRepeatedNodes(mesh);
  if (repeated == 0) return;
  mesh.mWarnings.push_back(repeated == 1 ? "1 cell names a point twice"
                                         : fmt::format("{} cells name a point twice", repeated));
}

/// Returns the ids in an array, if there is one for each item.
std::vector<std::uint32_t> LoadIds(const MeshArrays& arrays, std::string_view base,
                                   std::string_view instance, std::uint64_t count, Mesh& mesh) {
  const Variable* variable = arrays.Find(base, instance);
  if (variable == nullptr) return {};
  if (variable->mValues.GetNumElements() == count) return LoadIntegers(*variable);
  mesh.mWarnings.push_back(fmt::format("the array {} has {} values for {} items: it is not used",
                                       base, variable->mValues.GetNumElements(), count));
  return {};
}

}  // namespace

Mesh LoadMesh(const QovRyx::Geometry& geometry, std::string_view instance,
              const KindChoices& choices) {
  const MeshArrays arrays(geometry);
  Mesh mesh;
  mesh.mPoints = LoadPoints(arrays, instance);
  LoadCells(arrays, instance, mesh);
  DecideKinds(mesh, choices);
  mesh.mNodeIds = LoadIds(arrays, QovRyx::kNodeIds, instance, mesh.GetNumPoints(), mesh);
  mesh.mElementIds = LoadIds(arrays, QovRyx::kElementIds, instance, mesh.GetNumCells(), mesh);
  return mesh;
}

bool HaveEqualCells(const Mesh& first, const Mesh& second) {
  const auto isEqual = [](const CellRun& a, const CellRun& b) {
    return a.mNumCells == b.mNumCells && a.mNumNodes == b.mNumNodes;
  };
  return std::equal(first.mRuns.begin(), first.mRuns.end(), second.mRuns.begin(),
                    second.mRuns.end(), isEqual) &&
         first.mNodes == second.mNodes;
}

std::string DescribeDecision(const KindDecision& decision) {
  const auto plural = [](std::uint64_t n, const char* noun) {
    return fmt::format("{} {}{}", n, noun, n == 1 ? "" : "s");
  };
  std::string text = fmt::format("{} with {}: {} ({})", plural(decision.mNumCells, "cell"),
                                 plural(decision.mNumNodes, "node"), GetShape(decision.mKind).mName,
                                 decision.mReason);
  if (!decision.mWarning.empty()) text += "; " + decision.mWarning;
  return text;
}

}  // namespace QovMesh
