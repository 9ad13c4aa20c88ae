#include "check/UnreadContent.h"

#include <algorithm>
#include <array>
#include <exception>
#include <iterator>

#include "Qov/Ryx/StreamNames.h"
#include "check/Container.h"
#include "check/LightStage.h"
#include "check/ModelContent.h"
#include "check/RecordStage.h"
#include "check/TreeStage.h"

namespace Qov::Tools {
namespace {

constexpr std::size_t kMostPerCode = 1000;

/// Attribute names that are merely out of order are warnings, and kept.
bool IsUnread(const Finding& finding) {
  constexpr std::array<std::string_view, 7> kCodes = {"zero-byte",     "record-key", "stream-rest",
                                                      "light-gap",     "node-type",  "node-version",
                                                      "unknown-stream"};
  return std::find(kCodes.begin(), kCodes.end(), finding.mCode) != kCodes.end() ||
         (finding.mCode == "attribute-name" && finding.mSeverity == Severity::Error);
}

void RunStages(const std::string& path, Findings& findings) {
  Container container(path, findings);
  if (!container.OpenUnchecked()) return;
  if (container.HasStream(QovRyx::kRyxTree)) {
    ModelContent model;
    ReadTreeRecords(container, model, findings);
    ReadLightData(container, model, findings);
    CheckAttributes(container, model, findings);
    CheckMaterials(container, model, findings);
  }
  CheckHistory(container, findings);
  CheckViews(container, findings);
}

}  // namespace

std::vector<Finding> FindUnreadContent(const std::string& path) {
  Findings findings(kMostPerCode);
  try {
    RunStages(path, findings);
  } catch (const std::exception&) {
    // What cannot be read is reported by those who load the file.
  }
  std::vector<Finding> unread;
  std::copy_if(findings.GetKept().begin(), findings.GetKept().end(), std::back_inserter(unread),
               IsUnread);
  return unread;
}

}  // namespace Qov::Tools
