#include "WarningReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <tuple>

#include "Plural.h"

namespace Qov::Tools {
namespace {

constexpr std::size_t kMostShown = 50;

/// A warning about one or more files.
struct WarningGroup {
  const Warning* mpFirst = nullptr;
  std::size_t mCount = 1;
};

std::vector<WarningGroup> GroupWarnings(const std::vector<Warning>& warnings, LedgerDetail detail) {
  std::vector<WarningGroup> groups;
  std::map<std::tuple<std::string, std::string, std::string>, std::size_t> known;
  for (const Warning& warning : warnings) {
    const auto [found, isNew] =
        known.try_emplace({warning.mCode, warning.mText, warning.mRemedy}, groups.size());
    if (isNew || detail == LedgerDetail::Full) {
      groups.push_back({&warning});
    } else {
      ++groups[found->second].mCount;
    }
  }
  return groups;
}

}  // namespace

bool HasWarningOfLoss(const std::vector<Warning>& warnings) {
  constexpr std::array<std::string_view, 5> kCodes = {
      "other-attributes", "other-material", "other-sets", "unknown-stream", "unread-content"};
  return std::any_of(warnings.begin(), warnings.end(), [&kCodes](const Warning& warning) {
    return std::find(kCodes.begin(), kCodes.end(), warning.mCode) != kCodes.end();
  });
}

void PrintWarnings(const std::vector<Warning>& warnings, LedgerDetail detail, Output& output) {
  if (warnings.empty()) return;
  const TextStyle& style = output.GetStyle();
  output.Line();
  output.Line(Plural(warnings.size(), "warning") + ":");
  const std::vector<WarningGroup> groups = GroupWarnings(warnings, detail);
  std::size_t numLeft = warnings.size();
  for (std::size_t i = 0; i < std::min(kMostShown, groups.size()); ++i) {
    const Warning& warning = *groups[i].mpFirst;
    const std::string more =
        groups[i].mCount == 1 ? "" : fmt::format(" and {} more", groups[i].mCount - 1);
    const std::string path = warning.mPath.empty() ? "" : warning.mPath + more + ": ";
    numLeft -= groups[i].mCount;
    output.Line("  " + Yellow("[" + warning.mCode + "]", style) + " " +
                Escape(path + warning.mText, style));
    output.Line("    " + Escape(warning.mRemedy, style));
  }
  if (numLeft != 0) output.Line(fmt::format("  and {} more", numLeft));
}

Json WarningsJson(const std::vector<Warning>& warnings) {
  Json list = Json::array();
  for (const Warning& warning : warnings) {
    list.push_back({{"code", warning.mCode},
                    {"path", JsonText(warning.mPath)},
                    {"text", Escape(warning.mText, {})},
                    {"remedy", Escape(warning.mRemedy, {})}});
  }
  return list;
}

}  // namespace Qov::Tools
