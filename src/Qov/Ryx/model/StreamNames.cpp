#include "StreamNames.h"

#include <algorithm>
#include <array>
#include <set>

#include "container/ContainerFormat.h"

namespace QovRyx {

bool IsModelStream(std::string_view name) {
  const std::array known = {&kHeavyData, &kRyxTree,    &kLightData,        &kAttributes,
                            &kResources, &kViewPoints, &kGlobalInformation};
  return std::any_of(known.begin(), known.end(), [name](const auto* one) { return *one == name; });
}

std::vector<std::string> FindUnknownStreams(const std::vector<QovJbf::IndexItem>& items) {
  std::vector<std::string> unknown;
  std::set<std::string_view> seen;
  for (const QovJbf::IndexItem& item : items) {
    const std::string& name = item.mName;
    if (item.mSize == 0 || QovJbf::IsReservedName(name) || IsModelStream(name)) continue;
    if (seen.insert(name).second) unknown.push_back(name);
  }
  return unknown;
}

}  // namespace QovRyx
