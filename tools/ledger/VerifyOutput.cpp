#include "VerifyOutput.h"

#include <fmt/format.h>

#include "FaultReporter.h"
#include "VerifyNodes.h"
#include "VerifyResults.h"
#include "VerifyValues.h"
#include "VerifyViews.h"
#include "diagnostics/Utf8.h"

namespace Qov::Tools {

void VerifyOutput(ExpectedModel& model, const std::vector<InputFile>& inputs,
                  const QovRyx::Tree& output, Faults& faults) {
  FaultReporter reporter(inputs, faults);
  VerifyNodes(model, output.GetNodes(), reporter);
  VerifyLinks(model, output.GetNodes(), reporter);
  VerifyValues(model, output.GetNodes(), reporter);
  VerifyViews(model, output, reporter);
  VerifyHistory(model, output, reporter);
}

void AddUnreadContent(const std::vector<Finding>& unread, Faults& faults) {
  for (const Finding& finding : unread) {
    Fault fault;
    if (finding.mPlace.mNode) {
      fault.mNode = finding.mPlace.mNode->mNumber;
      fault.mNodeName = Shortened(finding.mPlace.mNode->mName);
    }
    Place place = finding.mPlace;
    place.mNode.reset();
    if (place.mResult) fault.mSubject = place.mResult->mName;
    place.mResult.reset();
    fault.mText = fmt::format("holds data that programs do not read: {} ({})", finding.mText,
                              place.GetText());
    faults.Add(std::move(fault));
  }
}

}  // namespace Qov::Tools
