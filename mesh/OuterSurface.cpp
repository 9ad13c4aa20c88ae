#include "mesh/OuterSurface.h"

#include <algorithm>
#include <array>
#include <limits>
#include <span>
#include <unordered_map>
#include <utility>

#include "Qov/Util/Raise.h"
#include "mesh/PolygonTriangles.h"

namespace QovMesh {
namespace {

constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();
constexpr std::size_t kMostFaceNodes = 8;

/// The corners of a face, ascending and each once; those that are missing are kNone.
using SortedCorners = std::array<std::uint32_t, 4>;

void Order(std::uint32_t& a, std::uint32_t& b) {
  const std::uint32_t least = std::min(a, b);
  b = std::max(a, b);
  a = least;
}

void Sort(SortedCorners& corners) {
  Order(corners[0], corners[1]);
  Order(corners[2], corners[3]);
  Order(corners[0], corners[2]);
  Order(corners[1], corners[3]);
  Order(corners[1], corners[2]);
}

SortedCorners SortCorners(const CellFace& face, const std::uint32_t* nodes) {
  SortedCorners corners = {nodes[face.mCorners[0]], nodes[face.mCorners[1]],
                           nodes[face.mCorners[2]],
                           face.mNumCorners == 4 ? nodes[face.mCorners[3]] : kNone};
  Sort(corners);
  if (corners[0] < corners[1] && corners[1] < corners[2] && corners[2] < corners[3]) return corners;
  bool repeats = false;
  for (std::size_t i = 0; i < 3; ++i) {
    if (corners[i] != corners[i + 1] || corners[i] == kNone) continue;
    corners[i] = kNone;
    repeats = true;
  }
  if (repeats) Sort(corners);
  return corners;
}

struct HashCorners {
  std::size_t operator()(const SortedCorners& corners) const {
    std::uint64_t hash = 0;
    for (const std::uint32_t corner : corners) {
      hash = (hash ^ corner) * 0x9E3779B97F4A7C15U;
      hash ^= hash >> 32U;
    }
    return static_cast<std::size_t>(hash);
  }
};

/// The faces of all solid cells. The first faces of each least corner are in a list, which is
/// faster than a hash table because neighbours are near in memory. The others are in a hash table,
/// because long lists would take quadratic time.
class FaceTable {
 public:
  FaceTable(std::uint64_t numPoints, std::uint64_t numFaces) : mFirst(numPoints, kNone) {
    mFaces.reserve(numFaces / 2 + numFaces / 16);
  }

  /// Leaves out faces that have shrunk to a line.
  void Add(const SortedCorners& corners, std::uint32_t cell, std::uint8_t face) {
    if (corners[2] == kNone) return;
    std::uint32_t& first = mFirst[corners[0]];
    std::size_t length = 0;
    for (std::uint32_t i = first; i != kNone; i = mFaces[i].mNext) {
      ++length;
      Face& other = mFaces[i];
      if (other.mB != corners[1] || other.mC != corners[2] || other.mD != corners[3]) continue;
      other.mFace = kShared;
      return;
    }
    if (length < kMostInList) {
      Append(corners, first, cell, face);
      first = static_cast<std::uint32_t>(mFaces.size() - 1);
      return;
    }
    const auto [found, isNew] =
        mFurther.try_emplace(corners, static_cast<std::uint32_t>(mFaces.size()));
    if (!isNew) {
      mFaces[found->second].mFace = kShared;
      return;
    }
    Append(corners, kNone, cell, face);
  }

  /// Calls `visit(cell, face)` for each face that one cell alone has, in the order of the cells.
  template <class Visitor>
  void ForEachOuterFace(Visitor visit) const {
    for (const Face& face : mFaces) {
      if (face.mFace != kShared) visit(face.mCell, face.mFace);
    }
  }

 private:
  static constexpr std::uint8_t kShared = 255;
  static constexpr std::size_t kMostInList = 64;
  struct Face {
    std::uint32_t mB, mC, mD;  ///< The corners after the least.
    std::uint32_t mNext;
    std::uint32_t mCell;
    std::uint8_t mFace;  ///< Number of the face in its cell; kShared if several cells have it.
  };

  void Append(const SortedCorners& corners, std::uint32_t next, std::uint32_t cell,
              std::uint8_t face) {
    if (mFaces.size() == kNone) {
      Qov::Util::Raise("mesh/OuterSurface", Qov::Util::Exception::ErrorType::OutOfBounds,
                       "The mesh has more than 4294967295 faces");
    }
    mFaces.push_back({corners[1], corners[2], corners[3], next, cell, face});
  }

  std::vector<std::uint32_t> mFirst;  ///< By least corner.
  std::vector<Face> mFaces;
  std::unordered_map<SortedCorners, std::uint32_t, HashCorners> mFurther;  ///< Positions in mFaces.
};

/// The nodes round a face or a cell that is one: corners and, between them, the nodes on edges.
struct Outline {
  std::array<std::uint32_t, kMostFaceNodes> mNodes{};
  std::size_t mNumCorners = 0;
  bool mIsQuadratic = false;
};

std::uint32_t FindEdgeNode(const CellShape& shape, std::uint8_t a, std::uint8_t b,
                           const std::uint32_t* nodes) {
  for (std::size_t i = 0; i < shape.mEdges.size(); ++i) {
    const CellEdge& edge = shape.mEdges[i];
    if ((edge[0] == a && edge[1] == b) || (edge[0] == b && edge[1] == a)) {
      return nodes[shape.mNumCorners + i];
    }
  }
  return kNone;  // not reached: every side of a face is an edge
}

Outline MakeOutline(const CellShape& shape, std::span<const std::uint8_t> corners,
                    const std::uint32_t* nodes) {
  Outline outline;
  outline.mNumCorners = corners.size();
  outline.mIsQuadratic = shape.IsQuadratic();
  for (std::size_t i = 0; i < corners.size(); ++i) {
    outline.mNodes[i] = nodes[corners[i]];
    if (!outline.mIsQuadratic) continue;
    outline.mNodes[corners.size() + i] =
        FindEdgeNode(shape, corners[i], corners[(i + 1) % corners.size()], nodes);
  }
  return outline;
}

/// The nodes of an edge of a polygon, ascending.
using Edge = std::pair<std::uint32_t, std::uint32_t>;

// Bits of Surface::mTriangleEdges.
constexpr std::uint8_t kFirstEdge = 1;
constexpr std::uint8_t kSecondEdge = 2;
constexpr std::uint8_t kThirdEdge = 4;
constexpr std::uint8_t kAllEdges = kFirstEdge | kSecondEdge | kThirdEdge;

class SurfaceBuilder {
 public:
  explicit SurfaceBuilder(const Mesh& mesh) : mMesh(mesh) {}

  Surface Build() {
    FaceTable faces(HasSolids() ? mMesh.GetNumPoints() : 0, CountFaces());
    for (const CellRun& run : mMesh.mRuns) {
      if (GetShape(run.mKind).mDimension == 3) {
        AddFaces(run, faces);
      } else {
        AddCells(run);
      }
    }
    faces.ForEachOuterFace(
        [&](std::uint32_t cell, std::uint8_t face) { AddOuterFace(cell, face); });
    return std::move(mSurface);
  }

 private:
  bool HasSolids() const {
    return std::any_of(mMesh.mRuns.begin(), mMesh.mRuns.end(),
                       [](const CellRun& run) { return GetShape(run.mKind).mDimension == 3; });
  }

  std::uint64_t CountFaces() const {
    std::uint64_t count = 0;
    for (const CellRun& run : mMesh.mRuns)
      count += run.mNumCells * GetShape(run.mKind).mFaces.size();
    return count;
  }

  const std::uint32_t* NodesOf(const CellRun& run, std::uint64_t cell) const {
    return mMesh.mNodes.data() + run.mFirstNode + (cell - run.mFirstCell) * run.mNumNodes;
  }

  void AddFaces(const CellRun& run, FaceTable& faces) const {
    const auto cellFaces = GetShape(run.mKind).mFaces;
    for (std::uint64_t cell = run.mFirstCell; cell < run.mFirstCell + run.mNumCells; ++cell) {
      const std::uint32_t* nodes = NodesOf(run, cell);
      for (std::size_t i = 0; i < cellFaces.size(); ++i) {
        faces.Add(SortCorners(cellFaces[i], nodes), static_cast<std::uint32_t>(cell),
                  static_cast<std::uint8_t>(i));
      }
    }
  }

  /// `edges` is a value of Surface::mTriangleEdges.
  void AddTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint8_t edges,
                   std::uint64_t cell) {
    if (a == b || b == c || c == a) return;
    mSurface.mTriangles.insert(mSurface.mTriangles.end(), {a, b, c});
    mSurface.mTriangleEdges.push_back(edges);
    mSurface.mTriangleCells.push_back(static_cast<std::uint32_t>(cell));
  }

  void AddLine(std::uint32_t a, std::uint32_t b, std::uint64_t cell) {
    mSurface.mLines.insert(mSurface.mLines.end(), {a, b});
    mSurface.mLineCells.push_back(static_cast<std::uint32_t>(cell));
  }

  /// A corner and the nodes on its two edges make a triangle; the nodes on edges make the rest.
  void AddOutline(const Outline& outline, std::uint64_t cell) {
    const std::size_t n = outline.mNumCorners;
    const auto& nodes = outline.mNodes;
    const std::size_t inner = outline.mIsQuadratic ? n : 0;  // where the inner polygon begins
    if (outline.mIsQuadratic) {
      for (std::size_t i = 0; i < n; ++i) {
        AddTriangle(nodes[i], nodes[n + i], nodes[n + (i + n - 1) % n], kFirstEdge | kThirdEdge,
                    cell);
      }
    }
    const std::uint8_t all = outline.mIsQuadratic ? 0 : kAllEdges;
    if (n == 3) return AddTriangle(nodes[inner], nodes[inner + 1], nodes[inner + 2], all, cell);
    const std::span<const std::uint32_t, 4> quad(nodes.data() + inner, 4);
    const std::size_t a = IsFirstDiagonalInside(quad, mMesh.mPoints) ? 0 : 1;
    const std::uint32_t fourth = quad[(a + 3) % 4];
    // If one triangle has shrunk to a line, the diagonal is an edge.
    const bool isFirstFlat = quad[a + 1] == quad[a] || quad[a + 1] == quad[a + 2];
    const bool isSecondFlat = fourth == quad[a] || fourth == quad[a + 2];
    AddTriangle(quad[a], quad[a + 1], quad[a + 2],
                all & (isSecondFlat ? kAllEdges : kFirstEdge | kSecondEdge), cell);
    AddTriangle(quad[a], quad[a + 2], fourth,
                all & (isFirstFlat ? kAllEdges : kSecondEdge | kThirdEdge), cell);
  }

  /// Finds the edges of the polygon in mCorners, a triangle, from `corner` on.
  std::uint8_t FindEdges(std::size_t corner) const {
    std::uint8_t edges = 0;
    for (std::size_t i = 0; i < 3; ++i) {
      const Edge edge = std::minmax({mCorners[corner + i], mCorners[corner + (i + 1) % 3]});
      if (!std::binary_search(mEdges.begin(), mEdges.end(), edge)) continue;
      edges = static_cast<std::uint8_t>(edges | 1U << i);
    }
    return edges;
  }

  void AddPolygon(std::span<const std::uint32_t> nodes, std::uint64_t cell) {
    mCorners.clear();
    if (!TriangulatePolygon(nodes, mMesh.mPoints, mCorners)) ++mSurface.mNumDoubtfulPolygons;
    mEdges.clear();
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      mEdges.emplace_back(std::minmax({nodes[i], nodes[(i + 1) % nodes.size()]}));
    }
    std::sort(mEdges.begin(), mEdges.end());
    for (std::size_t i = 0; i < mCorners.size(); i += 3) {
      AddTriangle(mCorners[i], mCorners[i + 1], mCorners[i + 2], FindEdges(i), cell);
    }
  }

  void AddCells(const CellRun& run) {
    const CellShape& shape = GetShape(run.mKind);
    constexpr std::array<std::uint8_t, 4> kCorners = {0, 1, 2, 3};
    for (std::uint64_t cell = run.mFirstCell; cell < run.mFirstCell + run.mNumCells; ++cell) {
      const std::uint32_t* nodes = NodesOf(run, cell);
      if (run.mKind == CellKind::Polygon) {
        AddPolygon({nodes, run.mNumNodes}, cell);
      } else if (shape.mDimension == 2) {
        AddOutline(MakeOutline(shape, std::span(kCorners).first(shape.mNumCorners), nodes), cell);
      } else if (run.mKind == CellKind::Line) {
        AddLine(nodes[0], nodes[1], cell);
      } else if (run.mKind == CellKind::QuadraticLine) {
        AddLine(nodes[0], nodes[2], cell);
        AddLine(nodes[2], nodes[1], cell);
      }
    }
  }

  const CellRun& RunOf(std::uint64_t cell) const {
    const auto after =
        std::upper_bound(mMesh.mRuns.begin(), mMesh.mRuns.end(), cell,
                         [](std::uint64_t c, const CellRun& run) { return c < run.mFirstCell; });
    return *(after - 1);
  }

  std::array<double, 3> CentreOf(std::span<const std::uint32_t> nodes) const {
    std::array<double, 3> centre{};
    for (const std::uint32_t node : nodes) {
      for (std::size_t k = 0; k < 3; ++k) {
        centre[k] += mMesh.mPoints[std::size_t{3} * node + k] / static_cast<double>(nodes.size());
      }
    }
    return centre;
  }

  /// Returns true if the corners go clockwise when they are seen from outside of the cell.
  bool FacesInward(const Outline& outline, std::span<const std::uint32_t> cellNodes) const {
    const std::span corners(outline.mNodes.data(), outline.mNumCorners);
    const auto inside = CentreOf(cellNodes);
    const auto centre = CentreOf(corners);
    double volume = 0;  // of the tetrahedra between the face and the centre of the cell
    for (std::size_t i = 0; i < corners.size(); ++i) {
      std::array<std::array<double, 3>, 3> v{};
      for (std::size_t k = 0; k < 3; ++k) {
        v[0][k] = mMesh.mPoints[std::size_t{3} * corners[i] + k] - centre[k];
        v[1][k] = mMesh.mPoints[std::size_t{3} * corners[(i + 1) % corners.size()] + k] - centre[k];
        v[2][k] = centre[k] - inside[k];
      }
      volume += v[2][0] * (v[0][1] * v[1][2] - v[0][2] * v[1][1]) +
                v[2][1] * (v[0][2] * v[1][0] - v[0][0] * v[1][2]) +
                v[2][2] * (v[0][0] * v[1][1] - v[0][1] * v[1][0]);
    }
    return volume < 0;
  }

  void AddOuterFace(std::uint32_t cell, std::uint8_t number) {
    const CellRun& run = RunOf(cell);
    const CellShape& shape = GetShape(run.mKind);
    const std::uint32_t* nodes = NodesOf(run, cell);
    const CellFace& face = shape.mFaces[number];
    std::array<std::uint8_t, 4> corners = face.mCorners;
    const std::span used(corners.data(), face.mNumCorners);
    Outline outline = MakeOutline(shape, used, nodes);
    if (FacesInward(outline, std::span(nodes, shape.mNumCorners))) {
      std::reverse(used.begin(), used.end());
      outline = MakeOutline(shape, used, nodes);
    }
    AddOutline(outline, cell);
  }

  const Mesh& mMesh;
  Surface mSurface;
  std::vector<std::uint32_t> mCorners;  ///< Of the triangles of one polygon.
  std::vector<Edge> mEdges;             ///< Of the same polygon, sorted.
};

}  // namespace

Surface FindOuterSurface(const Mesh& mesh) {
  if (mesh.GetNumCells() > kNone) {
    Qov::Util::Raise("mesh/OuterSurface", Qov::Util::Exception::ErrorType::OutOfBounds,
                     "The mesh has more than 4294967295 cells");
  }
  return SurfaceBuilder(mesh).Build();
}

}  // namespace QovMesh
