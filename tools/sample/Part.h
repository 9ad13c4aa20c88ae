#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Qov/Ryx/Tree.h"
#include "sample/Fields.h"
#include "sample/Mesh.h"

/// The parts of which sample models consist.
namespace Qov::Tools {

/// Kinds of arrays in the samples.
namespace Kind {
inline constexpr std::uint32_t kCoordinates = 0;
inline constexpr std::uint32_t kConnectivity = 4;
inline constexpr std::uint32_t kPolylength = 5;
inline constexpr std::uint32_t kNodeIds = 6;
inline constexpr std::uint32_t kElementIds = 9;
inline constexpr std::uint32_t kScalar = 12;
inline constexpr std::uint32_t kVector = 13;
}  // namespace Kind

/// Adds a node below another one. Returns its id.
std::uint32_t AddNode(QovRyx::Tree& tree, std::uint32_t parent, std::unique_ptr<QovRyx::Node> node);
/// Returns a group that is not yet in a tree.
std::unique_ptr<QovRyx::Group> MakeGroup(const std::string& name, QovUtil::AttributeMap attributes);

/// Returns a geometry with the five arrays of the mesh.
std::unique_ptr<QovRyx::Geometry> MakeGeometry(const std::string& name, const Mesh& mesh);
/// Returns a geometry with links to the first five arrays of another one.
std::unique_ptr<QovRyx::Geometry> MakeLinkedGeometry(const std::string& name,
                                                     std::uint32_t geometry);
/// Adds a shape of that colour, with the geometry below it. Returns the geometry's id.
std::uint32_t AddShape(QovRyx::Tree& tree, std::uint32_t parent, const QovRyx::ColourValue& colour,
                       std::unique_ptr<QovRyx::Geometry> geometry);

/// Returns the name of a result of a load case.
std::string InstanceName(const std::string& base, const std::string& instance);
void AddScalar(QovRyx::Geometry& geometry, const std::string& name, const Field& values,
               const std::string& unit);
void AddVector(QovRyx::Geometry& geometry, const std::string& name, const Field& values,
               const std::string& unit);

}  // namespace Qov::Tools
