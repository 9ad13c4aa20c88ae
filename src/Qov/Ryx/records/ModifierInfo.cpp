#include "Qov/Ryx/ModifierInfo.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace QovRyx {
namespace {

/// The application versions of the legacy builds, with dots and commas exactly as they wrote them.
constexpr std::array<std::string_view, 8> kLegacyBuilds = {
    "2010 R1 4.1.110.825", "2010 R1 4.1.110.912", "2010 R1 4.1.110.915", "2010 R1 4,1,311,128",
    "2010 R1 4,1,311,130", "2010 R1 4,1,311,131", "2010 R1 4,1,311,209", "2010 R1 4,1,311,217",
};

/// Returns true for the entry of a merge. Entries of older merges may lack a name.
bool IsMerge(const ModifierInfo& entry) {
  return entry.mApplication == "RyxMerge" ||
         (entry.mApplication.empty() && entry.mApplicationVersion.empty());
}

}  // namespace

bool IsLegacyWriter(const ModifierInfo& entry) {
  return std::find(kLegacyBuilds.begin(), kLegacyBuilds.end(), entry.mApplicationVersion) !=
         kLegacyBuilds.end();
}

const ModifierInfo* FindLegacyWriter(const std::vector<ModifierInfo>& history) {
  const auto writer = std::find_if_not(history.rbegin(), history.rend(), IsMerge);
  return writer != history.rend() && IsLegacyWriter(*writer) ? &*writer : nullptr;
}

}  // namespace QovRyx
