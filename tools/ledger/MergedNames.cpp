#include "MergedNames.h"

#include <set>

#include "Qov/Ryx/InstanceNames.h"

namespace Qov::Tools {
namespace {

using QovRyx::kInstanceSeparator;

/// Puts the suffix before the instance part. Adds a separator to a name without one.
std::string WithSuffix(const std::string& name, const std::string& suffix) {
  const std::string instance = InstancePartOf(name);
  const bool hasSeparator = name.find(kInstanceSeparator) != name.npos;
  const std::string front = name.substr(0, name.size() - instance.size());
  return front + (hasSeparator ? "" : std::string(1, kInstanceSeparator)) + suffix + instance;
}

/// Gives results without an instance part to the first instance. The other instances share them.
void ShareCommonResults(MergedNames& merged) {
  std::set<std::string> instances;
  for (const std::string& name : merged.mNames) instances.insert(InstancePartOf(name));
  instances.erase("");
  if (instances.empty()) return;
  const std::string first = instances.extract(instances.begin()).value();
  for (std::string& name : merged.mNames) {
    if (!InstancePartOf(name).empty()) continue;
    const std::string common = name;
    name += first;
    for (const std::string& instance : instances) merged.mShared[name].push_back(common + instance);
  }
}

}  // namespace

std::string InstancePartOf(const std::string& name) {
  const std::size_t separator = name.rfind(kInstanceSeparator);
  return separator == name.npos ? "" : name.substr(separator + 1);
}

MergedNames NameResults(const QovRyx::Geometry& geometry, std::size_t fileNumber, MergeMode mode) {
  const bool hasSuffix = mode.mNaming == QovRyx::InstanceNaming::FileSuffix ||
                         mode.mNaming == QovRyx::InstanceNaming::AutomaticSuffix;
  const std::string suffix = hasSuffix ? "F" + std::to_string(fileNumber) : "";
  MergedNames merged;
  for (const auto& result : geometry.GetVariables()) {
    const bool keep = mode.mNaming == QovRyx::InstanceNaming::AutomaticWithoutSuffix ||
                      (TakesOnlyInstances(mode) && InstancePartOf(result.mName).empty());
    merged.mNames.push_back(keep ? result.mName : WithSuffix(result.mName, suffix));
  }
  if (!TakesOnlyInstances(mode)) ShareCommonResults(merged);
  return merged;
}

}  // namespace Qov::Tools
