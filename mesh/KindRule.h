#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "mesh/CellKinds.h"

namespace QovMesh {

/// The kinds that the user sets for cells with a number of nodes, instead of the rule's.
using KindChoices = std::map<std::size_t, CellKind>;

/// All cells of a mesh that have the same number of nodes, and the kind that they are taken for.
struct KindDecision {
  std::size_t mNumNodes = 0;  ///< Nodes of a cell.
  std::uint64_t mNumCells = 0;
  CellKind mKind = CellKind::Empty;
  /// The position in the file's cell of each node, in the order of CellShape. Empty if the file has
  /// that order.
  std::vector<std::uint8_t> mNodeOrder;
  std::string mReason;   ///< Why, in words.
  std::string mWarning;  ///< Empty if the rule is sure.
};

/// The cells with `numNodes` nodes of one mesh: the nodes of all of them, one cell after another.
struct CellSample {
  std::size_t mNumNodes = 0;
  std::vector<std::uint32_t> mNodes;
};

/// Returns true if cells of that kind can have that number of nodes.
bool CanHaveNodes(CellKind kind, std::size_t numNodes);

/// Decides which kind of cells have `sample.mNumNodes` nodes. A file does not store it, so the rule
/// depends on the positions of the nodes, three coordinates for each point (docs/export.md,
/// "Cells"):
///
/// - 1, 2, 3 nodes: vertex, line, triangle.
/// - 6, 8, 10, 15, 20 nodes: quadratic, if the nodes after the corners are near the middle of the
///   edges: median over the cells of the greatest distance, in edge lengths, below 0.25. Files
///   store these nodes in different orders; the nearest edges decide on the order.
/// - 4 nodes: quad if flat, else tetrahedron.
/// - 5, 6, 8 nodes: polygon if they are flat and a convex ring, else pyramid, wedge, hexahedron.
/// - Any other number: polygon if flat, else a set of points.
///
/// Cells are flat if the median of third over first singular value of their nodes is below 0.1.
/// Every node must be the index of a point.
KindDecision DecideKind(const CellSample& sample, std::span<const float> points,
                        const KindChoices& choices);

}  // namespace QovMesh
