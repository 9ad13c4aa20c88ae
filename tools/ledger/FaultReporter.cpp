#include "FaultReporter.h"
#include "diagnostics/Utf8.h"

#include <fmt/format.h>

namespace Qov::Tools {

Fault FaultReporter::MakeFault(const ExpectedNode& node, const std::string& text) const {
  Fault fault;
  fault.mNode = node.mEntry.mId;
  if (node.mpSource != nullptr) fault.mInput = GetInputPath(node.mInput);
  const QovRyx::Node* content = node.GetContent();
  if (content != nullptr) fault.mNodeName = Shortened(content->GetName());
  fault.mText = text;
  return fault;
}

void FaultReporter::Report(ExpectedNode& node, const std::string& text) {
  node.mSound = false;
  Report(MakeFault(node, text));
}

void FaultReporter::Report(const ExpectedNode& node, ExpectedResult& result,
                           const std::string& text) {
  result.mSound = false;
  Fault fault = MakeFault(node, text);
  fault.mSubject = result.mName;
  fault.mInput = GetInputPath(result.mInput);
  Report(std::move(fault));
}

void FaultReporter::Report(std::size_t input, const std::string& subject, const std::string& text) {
  Fault fault;
  fault.mInput = GetInputPath(input);
  fault.mSubject = subject;
  fault.mText = text;
  Report(std::move(fault));
}

void FaultReporter::ReportDetails(ExpectedNode& node, const char* text,
                                  const std::string& details) {
  if (!details.empty()) Report(node, fmt::format("{}: {}", text, details));
}

}  // namespace Qov::Tools
