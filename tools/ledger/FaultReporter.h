#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "ExpectedModel.h"
#include "Faults.h"

namespace Qov::Tools {

/// Reports faults of an output and marks the expected nodes and results that have faults.
class FaultReporter {
 public:
  FaultReporter(const std::vector<InputFile>& inputs, Faults& faults)
      : mInputs(inputs), mFaults(faults) {}

  /// Returns a fault of a node, without reporting it.
  Fault MakeFault(const ExpectedNode& node, const std::string& text) const;

  void Report(Fault fault) { mFaults.Add(std::move(fault)); }
  /// Reports a fault of the output as a whole.
  void Report(const std::string& text) { mFaults.Add({0, "", "", "", text}); }
  void Report(ExpectedNode& node, const std::string& text);
  void Report(const ExpectedNode& node, ExpectedResult& result, const std::string& text);
  /// Reports a fault of a view, a path or a history entry named `subject`.
  void Report(std::size_t input, const std::string& subject, const std::string& text);
  /// Reports a fault of a node if there are details of it.
  void ReportDetails(ExpectedNode& node, const char* text, const std::string& details);

  const std::string& GetInputPath(std::size_t input) const { return mInputs[input].mPath; }

 private:
  const std::vector<InputFile>& mInputs;
  Faults& mFaults;
};

}  // namespace Qov::Tools
