#include "Qov/Ryx/InstanceNames.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <set>
#include <string_view>
#include <utility>

#include "LinkChains.h"
#include "MergeSummary.h"
#include "Qov/Util/Raise.h"
#include "model/GeometryEntries.h"

namespace QovRyx {
namespace {

using LinkedNames = PartLinksMap::mapped_type;
using Chains = LinkChains<Geometry::VarStruct>;

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
std::string_view InstancePart(std::string_view name) {
  return name.substr(name.rfind(kInstanceSeparator) + 1);
}

/// What results may be made of however little, and how many times as much as there was.
constexpr double kFreeBytes = 256.0 * 1024 * 1024;
constexpr double kMostCopies = 64;

[[noreturn]] void RaiseTooManyShared(double needed, double allowed,
                                     unsigned long line = __builtin_LINE()) {
  const auto text = [](double numBytes) {
    return std::to_string(static_cast<std::uint64_t>(numBytes));
  };
  Qov::Util::Raise("include/Qov/Ryx/InstanceNames", Qov::Util::Exception::ErrorType::OutOfBounds,
                   "Too many instances would share too many results: they would take " +
                       text(needed) + " bytes (limit " + text(allowed) + " bytes)",
                   line);
}

/// About the bytes that a result takes, its values aside.
double SizeOf(const Geometry::VarStruct& result) {
  const std::size_t size =
      sizeof(result) + result.mName.size() + result.mAttributes.GetStoredSize();
  return static_cast<double>(size);
}

/// What the results that all instances have in common take, and what sharing them would take.
struct SharedSize {
  double mOwn = 0;
  double mShared = 0;

  void Add(const Geometry& geometry) {
    std::set<std::string_view> instances;
    double instanceBytes = 0;
    double numCommon = 0;
    double commonBytes = 0;
    for (const Geometry::VarStruct& result : geometry.GetVariables()) {
      const double size = SizeOf(result);
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

/// Renames all results and gives the instance parts that there are then.
std::set<std::string> SuffixAll(Geometry& geometry, const std::string& suffix) {
  std::set<std::string> instances;
  for (std::size_t i = 0; i != geometry.GetVariables().size(); ++i) {
    std::string name = WithSuffix(geometry.GetVariables()[i].mName, suffix);
    if (HasInstancePart(name)) instances.emplace(InstancePart(name));
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
    links[primary].reserve(links[primary].size() + instances.size() - 1);
    for (auto it = std::next(instances.begin()); it != instances.end(); ++it) {
      links[primary].push_back(common + *it);
    }
  }
  return links;
}

/// Makes the result share the values of the primary one, unless the primary one takes its values
/// from that result. Returns the result.
const Geometry::VarStruct& LinkResult(Chains& chains, Geometry& geometry, std::uint32_t id,
                                      const std::string& name, const std::string& primaryName,
                                      DroppedResults& dropped) {
  const std::size_t numBefore = geometry.GetVariables().size();
  const auto position = static_cast<std::uint32_t>(geometry.GetOrAddVariableIndex(name));
  const auto primaryPosition =
      static_cast<std::uint32_t>(geometry.GetOrAddVariableIndex(primaryName));
  const Geometry::VarStruct& primary = geometry.GetVariables()[primaryPosition];
  Geometry::VarStruct& result = geometry.EditVariable(position);
  // Chains never lead to a new result, and never start at a result that is not linked.
  const bool isChained = primary.mLink.IsLinked() && position < numBefore;
  if (position == primaryPosition ||
      (isChained && chains.LeadsTo({id, primaryPosition}, {id, position}))) {
    return result;
  }
  if (position < numBefore && !result.mLink.IsLinked()) ++dropped.mReplaced;
  result.mKind = primary.mKind;
  result.mFlag = primary.mFlag;
  result.mAttributes = primary.mAttributes;
  result.TakeValueFieldsOf(primary);
  result.mLink = primary.mLink.IsLinked() ? primary.mLink : ResultLink({id, primaryPosition});
  chains.Update({id, position});
  return result;
}

}  // namespace

void CheckSharing(const Tree& tree) {
  SharedSize size;
  ForEachGeometry(tree.GetNodes(),
                  [&size](std::uint32_t, const Geometry& geometry) { size.Add(geometry); });
  const double allowed = std::max(kFreeBytes, kMostCopies * size.mOwn);
  if (size.mShared > allowed) RaiseTooManyShared(size.mShared, allowed);
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

void GenerateLinkedResults(Tree& tree, const PartLinksMap& links, DroppedResults& dropped) {
  double allowed = kFreeBytes;
  const NodeTree& nodes = tree.GetNodes();
  Chains chains([&nodes](const ResultPlace& place) { return FindVariable(nodes, place); });
  double needed = 0;
  for (const auto& [id, linksOfNode] : links) {
    Geometry* geometry = AsGeometry(tree.GetNodes().GetReqNode(id));
    if (geometry == nullptr) continue;
    for (const auto& [primary, names] : linksOfNode) {
      for (const std::string& name : names) {
        // An earlier file may have brought a primary result of any size.
        const Geometry::VarStruct& result =
            LinkResult(chains, *geometry, id, name, primary, dropped);
        allowed += kMostCopies * static_cast<double>(sizeof(result) + name.size());
        needed += SizeOf(result);
        if (needed > allowed) RaiseTooManyShared(needed, allowed);
      }
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
