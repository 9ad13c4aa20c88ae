#include "check/FileCheck.h"

#include <fmt/format.h>

#include <exception>

#include "ErrorText.h"
#include "ModelInput.h"
#include "check/Attributes.h"
#include "check/Container.h"
#include "check/HeavyData.h"
#include "check/LightData.h"
#include "check/ModelContent.h"
#include "check/RecordStage.h"
#include "check/TreeLinks.h"
#include "check/TreeRecords.h"
#include "container/ContainerFormat.h"
#include "model/StreamNames.h"

namespace Qov::Tools {
namespace {

FileReport::Kind FindKind(const Container& container) {
  if (container.HasStream(QovRyx::kRyxTree)) return FileReport::Kind::Model;
  if (container.HasStream(QovRyx::kViewPoints)) return FileReport::Kind::ViewPoints;
  return FileReport::Kind::Unknown;
}

/// Reports parts of a model without a tree. A view-point file has neither.
void CheckParts(const Container& container, FileReport& report) {
  if (report.mKind == FileReport::Kind::Model) return;
  for (const std::string& stream :
       {QovRyx::kHeavyData, QovRyx::kLightData, QovRyx::kAttributes, QovRyx::kResources}) {
    if (!container.HasStream(stream)) continue;
    report.mFindings.Error("no-tree", Place::InStream(stream),
                           "This is a part of a model, but the file has no tree.");
  }
}

void CheckModel(Container& container, Findings& findings) {
  if (container.ReportExpansion(
          {QovRyx::kRyxTree, QovRyx::kLightData, QovRyx::kAttributes, QovRyx::kResources})) {
    return;
  }
  ModelContent model;
  ReadTreeRecords(container, model, findings);
  CheckTreeLinks(model, findings);
  ReadLightData(container, model, findings);
  CheckAttributes(container, model, findings);
  CheckMaterials(container, model, findings);
  CheckHeavyData(container, model, findings);
}

/// Reports the error of loading the file, because a file without other findings may be refused,
/// too.
void CheckLoading(const std::string& path, Findings& findings) {
  try {
    QovRyx::Tree tree(false);
    LoadModelOrViews(path, tree);
  } catch (const std::exception& error) {
    findings.Error("load", {}, fmt::format("The file is refused: {}.", DescribeError(error, {})));
  }
}

}  // namespace

void CheckFile(const std::string& path, FileReport& report) {
  Findings& findings = report.mFindings;
  Container container(path, findings);
  const bool hasStreams = container.Check();
  report.mVersion = container.GetVersion();
  if (!hasStreams) return;
  report.mKind = FindKind(container);
  CheckParts(container, report);
  const bool hasViews = QovJbf::HasViews(container.GetVersion());
  const std::string nothing = "The container has neither a model nor view points.";
  if (report.mKind == FileReport::Kind::Unknown && !hasViews) {
    findings.Warning("no-model", {}, nothing);  // as in its view-point files
  } else if (report.mKind == FileReport::Kind::Unknown) {
    findings.Error("no-model", {}, nothing);
  } else if (report.mKind == FileReport::Kind::Model) {
    CheckModel(container, findings);
  }
  CheckHistory(container, findings);
  CheckViews(container, findings);
  const bool canLoad = report.mKind == FileReport::Kind::Model || hasViews;
  if (findings.GetNumErrors() == 0 && canLoad) CheckLoading(path, findings);
}

}  // namespace Qov::Tools
