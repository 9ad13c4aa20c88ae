#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Qov/Ryx/Tree.h"
#include "mesh/CellKinds.h"
#include "mesh/KindRule.h"

namespace QovMesh {

/// Consecutive cells of one kind with the same number of nodes.
struct CellRun {
  std::uint64_t mFirstCell = 0;
  std::uint64_t mNumCells = 0;
  std::uint64_t mFirstNode = 0;  ///< Position of the first cell's first node in Mesh::mNodes.
  std::uint32_t mNumNodes = 0;   ///< Nodes of each cell.
  CellKind mKind = CellKind::Empty;
};

/// The arrays of a geometry as a mesh. Cells have the order of the file, the nodes of each cell
/// that of CellShape.
struct Mesh {
  std::vector<float> mPoints;              ///< x, y, z of each point.
  std::vector<std::uint32_t> mNodes;       ///< The points of all cells, one cell after another.
  std::vector<CellRun> mRuns;              ///< In the order of the cells.
  std::vector<std::uint32_t> mNodeIds;     ///< One for each point, or empty.
  std::vector<std::uint32_t> mElementIds;  ///< One for each cell, or empty.
  std::vector<KindDecision> mDecisions;    ///< By number of nodes, ascending.
  std::vector<std::string> mWarnings;      ///< Doubts about the mesh; DescribeDecision adds others.

  std::uint64_t GetNumPoints() const { return mPoints.size() / 3; }
  std::uint64_t GetNumCells() const {
    return mRuns.empty() ? 0 : mRuns.back().mFirstCell + mRuns.back().mNumCells;
  }
};

/// Reads the mesh of a geometry from the arrays "Coordinates", "Connectivity" and "Polylength".
/// `instance` chooses among several meshes: an array with that instance part is preferred to one
/// without. Links are followed. A geometry without connectivity has points and no cells.
///
/// Raises MismatchError, which names the array, if the arrays contradict one another: no
/// coordinates, a width of coordinates other than 2 or 3 (with 2, z is 0), lengths that do not add
/// up to the connectivity, an index without a point, a chosen kind that cannot have so many nodes.
/// Raises the errors of DataLoader::LoadTo.
Mesh LoadMesh(const QovRyx::Geometry& geometry, std::string_view instance,
              const KindChoices& choices);

/// Returns true if the cells have the same numbers of nodes and the same points.
bool HaveEqualCells(const Mesh& first, const Mesh& second);

/// Returns "640 cells with 8 nodes: hexahedron (number of nodes)".
std::string DescribeDecision(const KindDecision& decision);

}  // namespace QovMesh
