#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string_view>

#include "Qov/Ryx/Tree.h"
#include "merge/ArrayNames.h"

namespace QovMesh {

/// Numbers of points and cells of a mesh, from its descriptors.
struct MeshCounts {
  std::uint64_t mNumPoints = 0;
  std::uint64_t mNumCells = 0;
};

/// The arrays that make an exported mesh.
inline constexpr std::array<std::string_view, 5> kExportedArrays = {
    QovRyx::kCoordinates, QovRyx::kConnectivity, QovRyx::kPolylength, QovRyx::kNodeIds,
    QovRyx::kElementIds};

/// Returns true if two arrays have the same values because one is a link to the other or both to a
/// third. Both may be null. Reads no array.
bool ShareValues(const QovRyx::Geometry::VarStruct* a, const QovRyx::Geometry::VarStruct* b);

/// Finds the mesh arrays of a geometry, which must outlive this object.
class MeshArrays {
 public:
  explicit MeshArrays(const QovRyx::Geometry& geometry);

  /// Returns the first array of that base name and instance part, else the first one of all
  /// instances, else null.
  const QovRyx::Geometry::VarStruct* Find(std::string_view base, std::string_view instance) const;
  /// Returns true if arrays with this instance part make another mesh than that of `other`. Arrays
  /// that share their values, such as links to the same array, are the same. Reads no array.
  bool HasOwnMesh(std::string_view instance, std::string_view other) const;
  /// Counts the points by "Coordinates" and the cells by "Polylength". There are no cells without
  /// "Connectivity". Reads no array.
  MeshCounts Count(std::string_view instance) const;

 private:
  std::map<QovRyx::ArrayName, const QovRyx::Geometry::VarStruct*> mArrays;
};

/// Returns the number of items of an array. With a width of 0 each element is an item.
std::uint64_t CountItems(const QovRyx::NumericArray& values);

}  // namespace QovMesh
