#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Qov/Ryx/Tree.h"
#include "sample/Fields.h"
#include "sample/Mesh.h"

/// The pieces that sample models are put together from.
namespace Qov::Tools {

/// Kinds of arrays, as the samples use them.
namespace Kind {
inline constexpr std::uint32_t kCoordinates = 0;
inline constexpr std::uint32_t kConnectivity = 4;
inline constexpr std::uint32_t kPolylength = 5;
inline constexpr std::uint32_t kNodeIds = 6;
inline constexpr std::uint32_t kElementIds = 9;
inline constexpr std::uint32_t kScalar = 12;
inline constexpr std::uint32_t kVector = 13;
inline constexpr std::uint32_t kLabel = 40;
}  // namespace Kind

/// Puts a node beneath another one and returns its id.
std::uint32_t AddNode(QovRyx::Tree& tree, std::uint32_t parent, std::unique_ptr<QovRyx::Node> node);
/// A group that is not yet in a tree.
std::unique_ptr<QovRyx::Group> MakeGroup(const std::string& name, QovUtil::AttributeMap attributes);

/// A geometry with the five arrays of the mesh.
std::unique_ptr<QovRyx::Geometry> MakeGeometry(const std::string& name, const Mesh& mesh);
/// A geometry that takes all its arrays from the first five of another one.
std::unique_ptr<QovRyx::Geometry> MakeLinkedGeometry(const std::string& name,
                                                     std::uint32_t geometry);
/// A shape of that colour with the geometry beneath it. Returns the geometry's id.
std::uint32_t AddShape(QovRyx::Tree& tree, std::uint32_t parent, const QovRyx::ColourValue& colour,
                       std::unique_ptr<QovRyx::Geometry> geometry);

/// Name of a result of a load case.
std::string InstanceName(const std::string& base, const std::string& instance);
void AddScalar(QovRyx::Geometry& geometry, const std::string& name, const Field& values,
               const std::string& unit);
void AddVector(QovRyx::Geometry& geometry, const std::string& name, const Field& values,
               const std::string& unit);
/// Unsigned integers that are a result, not part of the mesh.
void AddLabels(QovRyx::Geometry& geometry, const std::string& name,
               const std::vector<std::uint32_t>& values);

}  // namespace Qov::Tools
