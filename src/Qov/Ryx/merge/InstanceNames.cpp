#include "Qov/Ryx/InstanceNames.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <set>
#include <string_view>
#include <utility>

#include "ArrayNames.h"
#include "LinkedResults.h"
#include "SharingLimit.h"
#include "model/GeometryEntries.h"

namespace QovRyx {
namespace {

using LinkedNames = PartLinksMap::mapped_type;

std::string FileSuffix(std::uint64_t k, bool useSuffix) {
  return useSuffix ? "F" + std::to_string(k) : "";
}

/// Inserts the suffix after the last separator. Appends a separator to a name without one.
std::string WithSuffix(std::string name, const std::string& suffix) {
  const std::size_t separator = name.rfind(kInstanceSeparator);
  if (separator == std::string::npos) return name + kInstanceSeparator + suffix;
  return name.insert(separator + 1, suffix);
}

/// Returns the text after the last separator, which the name must have.
std::string_view InstancePart(std::string_view name) {
  return name.substr(name.rfind(kInstanceSeparator) + 1);
}

/// The sizes of results and of the links that share those common to all instances, in bytes.
struct SharedSize {
  double mOwn = 0;     ///< Size of all results.
  double mShared = 0;  ///< Size of the links.

  void Add(const Geometry& geometry) {
    std::set<std::string_view> instances;
    double instanceBytes = 0;
    double numCommon = 0;
    double commonBytes = 0;
    for (const Geometry::VarStruct& result : geometry.GetVariables()) {
      const double size = SharingLimit::SizeOf(result);
      mOwn += size;
      const std::string_view part = InstancePart(result.mName);
      if (!HasInstancePart(result.mName)) {
        ++numCommon;
        commonBytes += size;
      } else if (instances.insert(part).second) {
        instanceBytes += static_cast<double>(part.size());
      }
    }
    mShared += static_cast<double>(instances.size()) * commonBytes + numCommon * instanceBytes;
  }
};

/// Renames all results. Returns the instance parts of the new names.
std::set<std::string> SuffixAll(Geometry& geometry, const std::string& suffix) {
  std::set<std::string> instances;
  for (std::size_t i = 0; i != geometry.GetVariables().size(); ++i) {
    std::string name = WithSuffix(geometry.GetVariables()[i].mName, suffix);
    if (HasInstancePart(name)) instances.emplace(InstancePart(name));
    geometry.RenameVariable(i, std::move(name));
  }
  return instances;
}

/// Gives the results that all instances have in common to the first instance. Returns the names
/// under which the other instances share them.
LinkedNames ShareCommonResults(Geometry& geometry, const std::set<std::string>& instances) {
  LinkedNames links;
  if (instances.empty()) return links;
  for (std::size_t i = 0; i != geometry.GetVariables().size(); ++i) {
    const std::string common = geometry.GetVariables()[i].mName;
    if (HasInstancePart(common)) continue;
    const std::string primary = common + *instances.begin();
    geometry.RenameVariable(i, primary);
    links[primary].reserve(links[primary].size() + instances.size() - 1);
    for (auto it = std::next(instances.begin()); it != instances.end(); ++it) {
      links[primary].push_back(common + *it);
    }
  }
  return links;
}

}  // namespace

void CheckSharing(const Tree& tree) {
  SharedSize size;
  ForEachGeometry(tree.GetNodes(),
                  [&size](std::uint32_t, const Geometry& geometry) { size.Add(geometry); });
  SharingLimit::Check(size.mShared,
                      std::max(SharingLimit::kFreeBytes, SharingLimit::kMostCopies * size.mOwn));
}

void RenameResults(Tree& tree, std::uint64_t k, PartLinksMap& links, bool useSuffix) {
  links.clear();
  if (!useSuffix) CheckSharing(tree);
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
  DroppedResults ignored;
  GenerateLinkedResults(tree, links, ignored);
}

bool isMeshResult(const std::string& name) {
  const std::size_t separator = name.rfind(kInstanceSeparator);
  const bool whole = separator == std::string::npos || separator == 0;
  return IsMeshBase(whole ? name : name.substr(0, separator - 1));
}

bool HasInstancePart(const std::string& name) {
  const std::size_t separator = name.rfind(kInstanceSeparator);
  return separator != std::string::npos && separator + 1 != name.size();
}

}  // namespace QovRyx
