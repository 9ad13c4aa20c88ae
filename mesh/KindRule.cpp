#include "mesh/KindRule.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>
#include <optional>

#include "mesh/Vectors.h"

namespace QovMesh {
namespace {

/// Cells with a smaller ratio of singular values are flat.
constexpr double kFlatnessCut = 0.1;
/// Nodes on edges that are nearer to the middle, in edge lengths, belong to quadratic cells.
constexpr double kMiddleCut = 0.25;
/// A share of cells on the other side of a cut that is worth a warning.
constexpr double kMixedShare = 0.05;
/// Between 0 for cells that are convex rings and 1 for others.
constexpr double kRingCut = 0.5;

double Distance(const Triple& a, const Triple& b) {
  // std::hypot of libstdc++ returns 0 for (0, 0, NaN). Squares of floats fit into doubles.
  const Triple d = Subtract(a, b);
  return std::sqrt(Dot(d, d));
}

/// The upper triangle of a symmetric matrix: xx, yy, zz, xy, yz, zx.
using Moments = std::array<double, 6>;

/// Returns the second moments of the nodes about their centre.
Moments MomentsOf(std::span<const std::uint32_t> nodes, std::span<const float> points) {
  Triple centre{};
  for (const std::uint32_t node : nodes) {
    const Triple point = PointOf(points, node);
    for (std::size_t k = 0; k < 3; ++k) centre[k] += point[k] / static_cast<double>(nodes.size());
  }
  Moments moments{};
  for (const std::uint32_t node : nodes) {
    const Triple p = PointOf(points, node);
    const double x = p[0] - centre[0];
    const double y = p[1] - centre[1];
    const double z = p[2] - centre[2];
    const Moments terms = {x * x, y * y, z * z, x * y, y * z, z * x};
    for (std::size_t k = 0; k < moments.size(); ++k) moments[k] += terms[k];
  }
  return moments;
}

/// Returns the greatest and the least eigenvalue, by the trigonometric solution of the
/// characteristic cubic.
std::array<double, 2> ExtremeEigenvalues(const Moments& m) {
  const double mean = (m[0] + m[1] + m[2]) / 3;
  const double mixed = m[3] * m[3] + m[4] * m[4] + m[5] * m[5];
  const double spread = (m[0] - mean) * (m[0] - mean) + (m[1] - mean) * (m[1] - mean) +
                        (m[2] - mean) * (m[2] - mean) + 2 * mixed;
  const double radius = std::sqrt(spread / 6);
  if (!(radius > 0)) return {mean, mean};
  const double a = (m[0] - mean) / radius;
  const double b = (m[1] - mean) / radius;
  const double c = (m[2] - mean) / radius;
  const double d = m[3] / radius;
  const double e = m[4] / radius;
  const double f = m[5] / radius;
  const double half = (a * (b * c - e * e) - d * (d * c - e * f) + f * (d * e - b * f)) / 2;
  const double angle = std::acos(std::clamp(half, -1.0, 1.0)) / 3;
  const double third = 2 * std::numbers::pi / 3;
  return {mean + 2 * radius * std::cos(angle), mean + 2 * radius * std::cos(angle + third)};
}

/// Returns the third singular value of the nodes of a cell divided by the first one. Returns
/// nothing if all nodes are at one point, or if a coordinate is not a number.
std::optional<double> Flatness(std::span<const std::uint32_t> nodes,
                               std::span<const float> points) {
  const auto [greatest, least] = ExtremeEigenvalues(MomentsOf(nodes, points));
  if (!(greatest > 0) || !std::isfinite(greatest)) return std::nullopt;
  return std::sqrt(std::max(least, 0.0) / greatest);
}

using NodeOrder = std::vector<std::uint8_t>;

/// Returns the order in which the nodes have the positions of CellShape.
NodeOrder UsualOrder(const CellShape& shape) {
  NodeOrder order(shape.mNumNodes);
  std::iota(order.begin(), order.end(), std::uint8_t{0});
  return order;
}

/// Returns the middle of an edge of a cell.
Triple MiddleOf(const CellEdge& edge, std::span<const std::uint32_t> nodes,
                std::span<const float> points) {
  const Triple a = PointOf(points, nodes[edge[0]]);
  const Triple b = PointOf(points, nodes[edge[1]]);
  return {(a[0] + b[0]) / 2, (a[1] + b[1]) / 2, (a[2] + b[2]) / 2};
}

/// Returns the greatest distance of a node from the middle of its edge, in lengths of the edge;
/// nothing if no edge has a length.
std::optional<double> DistanceFromMiddle(std::span<const std::uint32_t> nodes,
                                         std::span<const float> points, const CellShape& shape,
                                         const NodeOrder& order) {
  std::optional<double> worst;
  for (std::size_t i = 0; i < shape.mEdges.size(); ++i) {
    const CellEdge& edge = shape.mEdges[i];
    const double length =
        Distance(PointOf(points, nodes[edge[0]]), PointOf(points, nodes[edge[1]]));
    if (!(length > 0) || !std::isfinite(length)) continue;
    const Triple node = PointOf(points, nodes[order[shape.mNumCorners + i]]);
    double off = Distance(MiddleOf(edge, nodes, points), node) / length;
    if (std::isnan(off)) off = std::numeric_limits<double>::infinity();
    if (!worst || off > *worst) worst = off;
  }
  return worst;
}

/// Returns the order of nodes by which each node on an edge is at the edge whose middle is nearest
/// in most cells; nothing if two nodes have the same edge.
std::optional<NodeOrder> FindOrder(const CellSample& sample, std::span<const float> points,
                                   const CellShape& shape) {
  const std::size_t numEdges = shape.mEdges.size();
  std::vector<std::size_t> votes(numEdges * numEdges);  // by node, then by edge
  for (std::size_t first = 0; first < sample.mNodes.size(); first += sample.mNumNodes) {
    const auto nodes = std::span(sample.mNodes).subspan(first, sample.mNumNodes);
    std::vector<Triple> middles;
    for (const CellEdge& edge : shape.mEdges) middles.push_back(MiddleOf(edge, nodes, points));
    for (std::size_t i = 0; i < numEdges; ++i) {
      const Triple node = PointOf(points, nodes[shape.mNumCorners + i]);
      const auto nearest = std::min_element(
          middles.begin(), middles.end(),
          [&](const Triple& a, const Triple& b) { return Distance(a, node) < Distance(b, node); });
      ++votes[i * numEdges + static_cast<std::size_t>(nearest - middles.begin())];
    }
  }
  NodeOrder order = UsualOrder(shape);
  std::vector<bool> isTaken(numEdges);
  for (std::size_t i = 0; i < numEdges; ++i) {
    const auto begin = votes.begin() + static_cast<std::ptrdiff_t>(i * numEdges);
    const auto most = std::max_element(begin, begin + static_cast<std::ptrdiff_t>(numEdges));
    const auto edge = static_cast<std::size_t>(most - begin);
    if (isTaken[edge]) return std::nullopt;
    isTaken[edge] = true;
    order[shape.mNumCorners + edge] = static_cast<std::uint8_t>(shape.mNumCorners + i);
  }
  return order;
}

/// Returns 0 if the nodes go once round a convex polygon, else 1.
double RingDefect(std::span<const std::uint32_t> nodes, std::span<const float> points) {
  const std::size_t n = nodes.size();
  const auto side = [&](std::size_t i) {
    return Subtract(PointOf(points, nodes[(i + 1) % n]), PointOf(points, nodes[i % n]));
  };
  double turn = 0;
  Triple axis{};  // direction around which the first corner turns
  for (std::size_t i = 0; i < n; ++i) {
    const Triple a = side(i);
    const Triple b = side(i + 1);
    const Triple normal = Cross(a, b);
    if (i == 0) axis = normal;
    if (Dot(axis, normal) <= 0) return 1;
    turn += std::atan2(std::hypot(normal[0], normal[1], normal[2]), Dot(a, b));
  }
  return std::abs(turn - 2 * std::numbers::pi) < 1 ? 0 : 1;
}

/// Result of a measure over all cells of a sample.
struct Measured {
  double mMedian = 0;
  double mShareBelow = 0;  ///< Share of the cells below the cut, 0 to 1.
  bool mIsKnown = false;   ///< Some cell could be measured.
};

template <class Measure>
Measured MeasureCells(const CellSample& sample, double cut, Measure measure) {
  std::vector<double> values;
  const std::size_t numCells = sample.mNodes.size() / sample.mNumNodes;
  for (std::size_t i = 0; i < numCells; ++i) {
    const auto nodes = std::span(sample.mNodes).subspan(i * sample.mNumNodes, sample.mNumNodes);
    if (const std::optional<double> value = measure(nodes)) values.push_back(*value);
  }
  if (values.empty()) return {};
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  const auto below =
      std::count_if(values.begin(), values.end(), [&](double value) { return value < cut; });
  return {*middle, static_cast<double>(below) / static_cast<double>(values.size()), true};
}

struct NumberedKind {
  std::size_t mNumNodes;
  CellKind mKind;
};

std::optional<CellKind> Find(std::span<const NumberedKind> kinds, std::size_t numNodes) {
  for (const NumberedKind& kind : kinds) {
    if (kind.mNumNodes == numNodes) return kind.mKind;
  }
  return std::nullopt;
}

constexpr NumberedKind kQuadratic[] = {{6, CellKind::QuadraticTriangle},
                                       {8, CellKind::QuadraticQuad},
                                       {10, CellKind::QuadraticTetrahedron},
                                       {15, CellKind::QuadraticWedge},
                                       {20, CellKind::QuadraticHexahedron}};
/// Kinds that the number of nodes decides, if they are not quadratic.
constexpr NumberedKind kByNumber[] = {{0, CellKind::Empty},     {1, CellKind::Vertex},
                                      {2, CellKind::Line},      {3, CellKind::Triangle},
                                      {5, CellKind::Pyramid},   {6, CellKind::Wedge},
                                      {8, CellKind::Hexahedron}};

std::string Percent(double share) { return fmt::format("{:.3g} %", 100 * share); }

/// Returns true if the cells are quadratic ones of that kind, and says why in `decision`.
bool TakeQuadratic(const CellSample& sample, std::span<const float> points, CellKind kind,
                   KindDecision& decision) {
  const CellShape& shape = GetShape(kind);
  const auto measure = [&](const NodeOrder& order) {
    return MeasureCells(sample, kMiddleCut, [&](std::span<const std::uint32_t> nodes) {
      return DistanceFromMiddle(nodes, points, shape, order);
    });
  };
  const auto isNear = [](const Measured& off) { return off.mIsKnown && off.mMedian < kMiddleCut; };
  Measured off = measure(UsualOrder(shape));
  if (!isNear(off)) {
    const std::optional<NodeOrder> order = FindOrder(sample, points, shape);
    if (!order) return false;
    off = measure(*order);
    if (!isNear(off)) return false;
    decision.mNodeOrder = *order;
  }
  decision.mKind = kind;
  decision.mReason = fmt::format("edge nodes {:.2f} edge lengths off the middle{}", off.mMedian,
                                 decision.mNodeOrder.empty() ? "" : ", reordered");
  if (off.mShareBelow < 1 - kMixedShare) {
    decision.mWarning =
        fmt::format("{} of the cells look like another kind", Percent(1 - off.mShareBelow));
  }
  return true;
}

/// Returns true if the cells are flat polygons, although solid cells can have as many nodes.
bool TakeRing(const CellSample& sample, std::span<const float> points, KindDecision& decision) {
  const Measured ratio =
      MeasureCells(sample, kFlatnessCut,
                   [&](std::span<const std::uint32_t> nodes) { return Flatness(nodes, points); });
  if (!ratio.mIsKnown || ratio.mMedian >= kFlatnessCut) return false;
  const Measured ring = MeasureCells(sample, kRingCut, [&](std::span<const std::uint32_t> nodes) {
    return std::optional(RingDefect(nodes, points));
  });
  if (ring.mMedian >= kRingCut) return false;
  decision.mKind = CellKind::Polygon;
  decision.mReason = fmt::format("flatness {:.2f}, convex rings", ratio.mMedian);
  if (ring.mShareBelow < 1 - kMixedShare) {
    decision.mWarning =
        fmt::format("{} of the cells look like another kind", Percent(1 - ring.mShareBelow));
  }
  return true;
}

/// Takes the cells for `flat` or `solid`, by flatness.
void TakeByFlatness(const CellSample& sample, std::span<const float> points, CellKind flat,
                    CellKind solid, KindDecision& decision) {
  const Measured ratio =
      MeasureCells(sample, kFlatnessCut,
                   [&](std::span<const std::uint32_t> nodes) { return Flatness(nodes, points); });
  const bool isFlat = ratio.mMedian < kFlatnessCut;
  decision.mKind = isFlat ? flat : solid;
  decision.mReason = fmt::format("flatness {:.2f}", ratio.mMedian);
  const double others = isFlat ? 1 - ratio.mShareBelow : ratio.mShareBelow;
  if (!ratio.mIsKnown) {
    decision.mReason = "no flatness";
    decision.mWarning = "the nodes of each cell lie on one point";
  } else if (others > kMixedShare) {
    decision.mWarning =
        fmt::format("{} of the cells are {}", Percent(others), isFlat ? "not flat" : "flat");
  }
}

}  // namespace

bool CanHaveNodes(CellKind kind, std::size_t numNodes) {
  switch (kind) {
    case CellKind::Empty:
      return numNodes == 0;
    case CellKind::Points:
      return numNodes > 0;
    case CellKind::Polygon:
      return numNodes > 2;
    default:
      return GetShape(kind).mNumNodes == numNodes;
  }
}

KindDecision DecideKind(const CellSample& sample, std::span<const float> points,
                        const KindChoices& choices) {
  KindDecision decision;
  decision.mNumNodes = sample.mNumNodes;
  if (const auto chosen = choices.find(sample.mNumNodes); chosen != choices.end()) {
    if (GetShape(chosen->second).IsQuadratic() && CanHaveNodes(chosen->second, sample.mNumNodes)) {
      TakeQuadratic(sample, points, chosen->second, decision);  // for the order of the nodes
    }
    decision.mKind = chosen->second;
    decision.mReason = decision.mNodeOrder.empty() ? "chosen" : "chosen, edge nodes reordered";
    decision.mWarning.clear();
    return decision;
  }
  const std::optional<CellKind> quadratic = Find(kQuadratic, sample.mNumNodes);
  if (quadratic && TakeQuadratic(sample, points, *quadratic, decision)) return decision;
  if (const std::optional<CellKind> kind = Find(kByNumber, sample.mNumNodes)) {
    if (GetShape(*kind).mDimension == 3 && TakeRing(sample, points, decision)) return decision;
    decision.mKind = *kind;
    decision.mReason = "number of nodes";
    if (*kind == CellKind::Empty) decision.mWarning = "cells without nodes";
    return decision;
  }
  if (sample.mNumNodes == 4) {
    TakeByFlatness(sample, points, CellKind::Quad, CellKind::Tetrahedron, decision);
    return decision;
  }
  TakeByFlatness(sample, points, CellKind::Polygon, CellKind::Points, decision);
  if (decision.mKind == CellKind::Points) {
    decision.mWarning = "no kind of cell is known for them: they become sets of points";
  }
  return decision;
}

}  // namespace QovMesh
