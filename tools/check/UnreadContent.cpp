#include "check/UnreadContent.h"

#include <algorithm>
#include <array>
#include <exception>
#include <iterator>

#include "check/Attributes.h"
#include "check/Container.h"
#include "check/LightData.h"
#include "check/ModelContent.h"
#include "check/RecordStage.h"
#include "check/TreeRecords.h"
#include "model/StreamNames.h"

namespace Qov::Tools {
namespace {

constexpr std::size_t kMostPerCode = 1000;

/// Returns true for data that programs drop. Unsorted attribute names are only warnings, and
/// programs keep those attributes.
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
    // The loading of the file reports data that cannot be read.
  }
  std::vector<Finding> unread;
  std::copy_if(findings.GetKept().begin(), findings.GetKept().end(), std::back_inserter(unread),
               IsUnread);
  return unread;
}

}  // namespace Qov::Tools
