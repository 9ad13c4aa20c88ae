#include "MergeJson.h"

#include <nlohmann/json.hpp>

#include "ErrorText.h"
#include "MergeText.h"
#include "ledger/WarningReport.h"

namespace Qov::Tools {
namespace {

Json TextList(const std::vector<std::string>& texts) {
  Json list = Json::array();
  for (const std::string& text : texts) list.push_back(JsonText(text));
  return list;
}

}  // namespace

Json MergeJson(const QovRyx::MergeRequest& request, const QovRyx::MergeReport& report,
               const std::vector<Warning>& warnings, bool isVerified) {
  Json document = MakeJsonDocument("merge");
  document["path"] = JsonText(request.mOutput);
  document["inputs"] = TextList(request.mInputs);
  document["mode"] = NameOf(report.mMode);
  document["names"] = NameOf(report.mNames);
  document["reason"] = JsonText(RestoreNames(report.mReason));
  document["instanceNames"] = TextList(report.mInstanceNames);
  document["nodes"] = report.mNodes;
  document["geometries"] = report.mGeometries;
  document["results"] = report.mResults;
  document["inputBytes"] = report.mInputBytes;
  document["outputBytes"] = report.mOutputBytes;
  document["shared"] = {{"linked", report.mShared.mLinked},
                        {"sharedBytes", report.mShared.mSharedBytes},
                        {"savedBytes", report.mShared.mSavedBytes},
                        {"notCompared", report.mShared.mNotCompared}};
  document["leftOut"] = {{"nodes", report.mNodesLeftOut},
                         {"results", report.mResultsLeftOut},
                         {"views", report.mViewsLeftOut}};
  document["linksReplaced"] = report.mLinksReplaced;
  document["notes"] = NotesJson(report.mNotes);
  document["warnings"] = WarningsJson(warnings);
  document["verified"] = isVerified;
  return document;
}

}  // namespace Qov::Tools
