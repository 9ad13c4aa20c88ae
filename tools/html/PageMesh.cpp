#include "html/PageMesh.h"

#include <cstddef>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "html/ArrayCoding.h"

namespace Qov::Tools {
namespace {

constexpr std::uint16_t kGreatestCoordinate = 65535;

/// Numbers things in the order of their first use.
class Numbering {
 public:
  explicit Numbering(std::uint64_t count) : mNumbers(count, kUnused) {}

  std::uint32_t operator()(std::uint32_t thing, std::vector<std::uint32_t>& used) {
    std::uint32_t& number = mNumbers[thing];
    if (number == kUnused) {
      number = static_cast<std::uint32_t>(used.size());
      used.push_back(thing);
    }
    return number;
  }

 private:
  static constexpr std::uint32_t kUnused = std::numeric_limits<std::uint32_t>::max();
  std::vector<std::uint32_t> mNumbers;
};

std::vector<std::uint32_t> NumberAll(const std::vector<std::uint32_t>& things, Numbering& numbering,
                                     std::vector<std::uint32_t>& used) {
  std::vector<std::uint32_t> numbers;
  numbers.reserve(things.size());
  for (const std::uint32_t thing : things) numbers.push_back(numbering(thing, used));
  return numbers;
}

PageBuffer CodeDifferences(const std::vector<std::uint32_t>& values) {
  std::string bytes;
  AppendDifferences(values, bytes);
  return {values.size(), "i32-delta", bytes};
}

PageBuffer CodeIndices(const std::vector<std::uint32_t>& indices) {
  std::string bytes;
  AppendIndices(indices, bytes);
  return {indices.size(), "index", bytes};
}

/// Returns the ids of the used things; nothing if each id is the position plus 1, or if there are
/// no ids. The members "hasPointIds" and "hasCellIds" tell these two apart.
std::optional<PageBuffer> CodeIds(const std::vector<std::uint32_t>& ids,
                                  const std::vector<std::uint32_t>& used) {
  if (ids.empty()) return std::nullopt;
  std::vector<std::uint32_t> values;
  values.reserve(used.size());
  bool isPlain = true;
  for (const std::uint32_t position : used) {
    values.push_back(ids[position]);
    isPlain = isPlain && ids[position] == position + 1;
  }
  return isPlain ? std::nullopt : std::optional(CodeDifferences(values));
}

/// Sets the member "box" too.
PageBuffer CodePoints(const QovMesh::Mesh& mesh, const std::vector<std::uint32_t>& used,
                      Json& json) {
  json["box"] = Json::array({Json::array(), Json::array()});
  std::vector<float> values(used.size());
  std::vector<std::uint16_t> all;
  all.reserve(3 * used.size());
  for (std::size_t axis = 0; axis < 3; ++axis) {
    for (std::size_t i = 0; i < used.size(); ++i) {
      values[i] = mesh.mPoints[std::size_t{3} * used[i] + axis];
    }
    const FiniteRange range(values);
    json["box"][0].push_back(JsonFloat(range.mLeast));
    json["box"][1].push_back(JsonFloat(range.mGreatest));
    std::vector<std::uint16_t> codes = Quantize(values, range, kGreatestCoordinate);
    TakeDifferences(codes);
    all.insert(all.end(), codes.begin(), codes.end());
  }
  std::string bytes;
  AppendBytePlanes(std::span<const std::uint16_t>(all), bytes);
  return {all.size(), "u16-delta", bytes};
}

}  // namespace

PageMesh::PageMesh(const QovMesh::Mesh& mesh, const QovMesh::Surface& surface) {
  Numbering points(mesh.GetNumPoints());
  mTriangles = NumberAll(surface.mTriangles, points, mPoints);
  mLines = NumberAll(surface.mLines, points, mPoints);
  Numbering cells(mesh.GetNumCells());
  mTriangleCells = NumberAll(surface.mTriangleCells, cells, mCells);
  mLineCells = NumberAll(surface.mLineCells, cells, mCells);
}

PageItem MakeMeshItem(const QovMesh::Mesh& mesh, const PageMesh& surface) {
  PageItem item;
  item.mJson = {{"steps", nullptr},
                {"numPoints", surface.mPoints.size()},
                {"numTriangles", surface.mTriangleCells.size()},
                {"numLines", surface.mLineCells.size()},
                {"hasPointIds", !mesh.mNodeIds.empty()},
                {"hasCellIds", !mesh.mElementIds.empty()}};
  const bool hasLines = !surface.mLines.empty();
  const auto add = [&item](const char* name, std::optional<PageBuffer> buffer) {
    item.mBuffers.emplace_back(name, std::move(buffer));
  };
  add("points", CodePoints(mesh, surface.mPoints, item.mJson));
  add("triangles", CodeIndices(surface.mTriangles));
  add("lines", hasLines ? std::optional(CodeDifferences(surface.mLines)) : std::nullopt);
  add("pointIds", CodeIds(mesh.mNodeIds, surface.mPoints));
  add("pointPositions", CodeDifferences(surface.mPoints));
  add("triangleCells", CodeDifferences(surface.mTriangleCells));
  add("lineCells", hasLines ? std::optional(CodeDifferences(surface.mLineCells)) : std::nullopt);
  add("cellPositions", CodeDifferences(surface.mCells));
  add("cellIds", CodeIds(mesh.mElementIds, surface.mCells));
  return item;
}

}  // namespace Qov::Tools
