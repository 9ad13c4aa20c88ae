#include "check/FileCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <utility>

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
#include "container/SourceFile.h"
#include "container/ThreadCount.h"
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

/// Checks the content of a file whose blocks are listed.
void CheckContent(const std::string& path, Container& container, BlocksAhead& ahead,
                  FileReport& report) {
  Findings& findings = report.mFindings;
  if (!container.CheckBlocks(ahead)) return;
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

}  // namespace

struct FileChecks::OpenFile {
  explicit OpenFile(std::size_t limitPerCode) : mReport(limitPerCode) {}

  FileReport mReport;
  std::unique_ptr<Container> mpContainer;
  bool mHasBlocks = false;
  std::exception_ptr mpError;  ///< Raised when it is the turn of the file.
};

FileChecks::FileChecks(const std::vector<std::string>& paths, std::size_t limitPerCode)
    : mPaths(paths), mLimitPerCode(limitPerCode), mNumAtOnce(1) {
  constexpr std::size_t kMostOpen = 8;
  const std::size_t numThreads = QovJbf::GetThreadCount(0);
  if (numThreads > 1) {
    mNumAtOnce = std::min({numThreads + 1, kMostOpen, QovJbf::CountWorkerHandles()});
  }
}

FileChecks::~FileChecks() = default;

FileReport FileChecks::CheckNext() {
  mAhead.DropKept();
  if (mFiles.empty()) OpenNext();
  try {
    while (mFiles.size() < mNumAtOnce && mNumOpened < mPaths.size()) OpenNext();
  } catch (const std::bad_alloc&) {
    // The next file is opened at its turn.
  }
  const std::string& path = mPaths[mNumOpened - mFiles.size()];
  const std::unique_ptr<OpenFile> file = std::move(mFiles.front());
  mFiles.pop_front();
  if (file->mpError) std::rethrow_exception(file->mpError);
  file->mReport.mVersion = file->mpContainer->GetVersion();
  if (file->mHasBlocks) CheckContent(path, *file->mpContainer, mAhead, file->mReport);
  return std::move(file->mReport);
}

void FileChecks::OpenNext() {
  OpenFile& file = *mFiles.emplace_back(std::make_unique<OpenFile>(mLimitPerCode));
  const std::string& path = mPaths[mNumOpened++];
  try {
    file.mpContainer = std::make_unique<Container>(path, file.mReport.mFindings);
    file.mHasBlocks = file.mpContainer->ListBlocks(mAhead);
  } catch (const std::exception&) {
    file.mpError = std::current_exception();
  }
}

void CheckFile(const std::string& path, FileReport& report) {
  BlocksAhead ahead;
  Container container(path, report.mFindings);
  const bool hasBlocks = container.ListBlocks(ahead);
  report.mVersion = container.GetVersion();
  if (hasBlocks) CheckContent(path, container, ahead, report);
}

}  // namespace Qov::Tools
