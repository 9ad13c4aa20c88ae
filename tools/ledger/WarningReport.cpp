#include "WarningReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "Plural.h"

namespace Qov::Tools {
namespace {

constexpr std::size_t kMostShown = 50;

}  // namespace

bool HasWarningOfLoss(const std::vector<Warning>& warnings) {
  return std::any_of(warnings.begin(), warnings.end(), [](const Warning& warning) {
    return warning.mCode == "unread-content" || warning.mCode == "unknown-stream";
  });
}

void PrintWarnings(const std::vector<Warning>& warnings, Output& output) {
  if (warnings.empty()) return;
  const TextStyle& style = output.GetStyle();
  output.Line();
  output.Line(Plural(warnings.size(), "warning") + ":");
  for (std::size_t i = 0; i < std::min(kMostShown, warnings.size()); ++i) {
    const Warning& warning = warnings[i];
    const std::string path = warning.mPath.empty() ? "" : warning.mPath + ": ";
    output.Line("  " + Yellow("[" + warning.mCode + "]", style) + " " +
                Escape(path + warning.mText, style));
    output.Line("    " + Escape(warning.mRemedy, style));
  }
  if (warnings.size() > kMostShown) {
    output.Line(fmt::format("  and {} more", warnings.size() - kMostShown));
  }
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
