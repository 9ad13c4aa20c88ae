#include "Qov/Ryx/InstanceNames.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <set>
#include <string_view>
#include <utility>

#include "GeometryEntries.h"

namespace QovRyx {
namespace {

using LinkedNames = PartLinksMap::mapped_type;

constexpr std::array<std::string_view, 6> kMeshArrays = {
    "Coordinates", "Connectivity", "Polylength", "Part Elements", "Node Ids", "Element IDs"};

std::string FileSuffix(std::uint64_t k, bool useSuffix) {
  return useSuffix ? "F" + std::to_string(k) : "";
}

/// Puts the suffix behind the last separator; a name without one gets one.
std::string WithSuffix(std::string name, const std::string& suffix) {
  const std::size_t separator = name.rfind(kInstanceSeparator);
  if (separator == std::string::npos) return name + kInstanceSeparator + suffix;
  return name.insert(separator + 1, suffix);
}

/// What stands behind the separator, which the name must have.
std::string InstancePart(const std::string& name) {
  return name.substr(name.rfind(kInstanceSeparator) + 1);
}

/// Renames all results and gives the instance parts that there are then.
std::set<std::string> SuffixAll(Geometry& geometry, const std::string& suffix) {
  std::set<std::string> instances;
  for (std::size_t i = 0; i != geometry.GetVariables().size(); ++i) {
    std::string name = WithSuffix(geometry.GetVariables()[i].mName, suffix);
    if (HasInstancePart(name)) instances.insert(InstancePart(name));
    geometry.RenameVariable(i, std::move(name));
  }
  return instances;
}

/// Makes the results that all instances have in common results of the first one, and names those
/// that the others shall share with it.
LinkedNames ShareCommonResults(Geometry& geometry, const std::set<std::string>& instances) {
  LinkedNames links;
  if (instances.empty()) return links;
  for (std::size_t i = 0; i != geometry.GetVariables().size(); ++i) {
    const std::string common = geometry.GetVariables()[i].mName;
    if (HasInstancePart(common)) continue;
    const std::string primary = common + *instances.begin();
    geometry.RenameVariable(i, primary);
    for (auto it = std::next(instances.begin()); it != instances.end(); ++it) {
      links[primary].push_back(common + *it);
    }
  }
  return links;
}

void LinkResult(Geometry& geometry, std::uint32_t id, const std::string& name,
                const std::string& primaryName) {
  const std::uint64_t position = geometry.GetOrAddVariableIndex(name);
  const std::uint64_t primaryPosition = geometry.GetOrAddVariableIndex(primaryName);
  const Geometry::VarStruct& primary = geometry.GetVariables()[primaryPosition];
  Geometry::VarStruct& result = geometry.EditVariable(position);
  result.mKind = primary.mKind;
  result.mFlag = primary.mFlag;
  result.mAttributes = primary.mAttributes;
  result.mLinked = primary.mLinked;
  result.mLink = primary.mLink;
  result.mLeadsNowhere = primary.mLeadsNowhere;
  if (result.mLinked) return;
  result.mLinked = true;
  result.mLink = {id, static_cast<std::uint32_t>(primaryPosition)};
}

}  // namespace

void RenameResults(Tree& tree, std::uint64_t k, PartLinksMap& links, bool useSuffix) {
  links.clear();
  const std::string suffix = FileSuffix(k, useSuffix);
  ForEachGeometryEntry(tree, [&](std::uint32_t id, Geometry& geometry) {
    links[id] = ShareCommonResults(geometry, SuffixAll(geometry, suffix));
  });
}

void AutoRenameInstances(Tree& tree, std::uint64_t k, PartLinksMap& links, bool useSuffix) {
  links.clear();
  const std::string suffix = FileSuffix(k, useSuffix);
  ForEachGeometryEntry(tree, [&](std::uint32_t, Geometry& geometry) {
    for (std::size_t i = 0; i != geometry.GetVariables().size(); ++i) {
      const std::string& name = geometry.GetVariables()[i].mName;
      if (HasInstancePart(name)) geometry.RenameVariable(i, WithSuffix(name, suffix));
    }
  });
}

void GenerateLinkedResults(Tree& tree, const PartLinksMap& links) {
  for (const auto& [id, linksOfNode] : links) {
    Geometry* geometry = AsGeometry(tree.GetNodes().GetReqNode(id));
    if (geometry == nullptr) continue;
    for (const auto& [primary, names] : linksOfNode) {
      for (const std::string& name : names) LinkResult(*geometry, id, name, primary);
    }
  }
}

bool isMeshResult(const std::string& name) {
  const std::size_t separator = name.rfind(kInstanceSeparator);
  const bool whole = separator == std::string::npos || separator == 0;
  const std::string base = whole ? name : name.substr(0, separator - 1);
  return std::find(kMeshArrays.begin(), kMeshArrays.end(), base) != kMeshArrays.end();
}

bool HasInstancePart(const std::string& name) {
  const std::size_t separator = name.rfind(kInstanceSeparator);
  return separator != std::string::npos && separator + 1 != name.size();
}

}  // namespace QovRyx
