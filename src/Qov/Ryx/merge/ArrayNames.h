#pragma once

#include <compare>
#include <string_view>

#include "Qov/Ryx/InstanceNames.h"

namespace QovRyx {

/// Names of the arrays that make a mesh.
inline constexpr std::string_view kCoordinates = "Coordinates";
inline constexpr std::string_view kConnectivity = "Connectivity";
inline constexpr std::string_view kPolylength = "Polylength";
inline constexpr std::string_view kElementIds = "Element IDs";
inline constexpr std::string_view kNodeIds = "Node Ids";
inline constexpr std::string_view kPartElements = "Part Elements";

/// Base name and instance part of a result.
struct ArrayName {
  std::string_view mBase;
  std::string_view mInstance;  ///< Empty if the array belongs to all instances.
  friend auto operator<=>(const ArrayName&, const ArrayName&) = default;
};

/// Splits the name of a result. A space before the separator belongs to neither part.
inline ArrayName SplitName(std::string_view name) {
  const std::size_t separator = name.rfind(kInstanceSeparator);
  if (separator == name.npos) return {name, {}};
  std::string_view base = name.substr(0, separator);
  if (base.ends_with(' ')) base.remove_suffix(1);
  return {base, name.substr(separator + 1)};
}

/// Returns true for the base names of the mesh arrays, including ids.
inline bool IsMeshBase(std::string_view base) {
  return base == kCoordinates || base == kConnectivity || base == kPolylength ||
         base == kElementIds || base == kNodeIds || base == kPartElements;
}

}  // namespace QovRyx
