#pragma once

#include <string>
#include <vector>

#include "Differences.h"
#include "ExpectedModel.h"
#include "check/Finding.h"

namespace Qov::Tools {

/// Holds an output against what it ought to be: nodes, results, attributes, materials, node sets,
/// views and history, and every value, bit for bit.
///
/// One array of the output and one of an input are in memory at a time, taken in stored order.
class Recount {
 public:
  /// What is not found sound in `output` is marked in `model`.
  Recount(ExpectedModel& model, const std::vector<InputFile>& inputs, const QovRyx::Tree& output,
          Differences& differences)
      : mModel(model), mInputs(inputs), mOutput(output), mDifferences(differences) {}

  /// Reports the findings `unread` of the output, because a merge never writes data that programs
  /// drop.
  void ReportUnread(const std::vector<Finding>& unread);

  /// Raises what reading an input raises, with its path; an output that cannot be read is a
  /// difference.
  void Run();

 private:
  // Nodes (RecountNodes.cpp)
  void CompareNodes();
  void CompareNode(ExpectedNode& node);
  void CompareContent(ExpectedNode& node, const QovRyx::Node& content);
  // Results but for their values (RecountResults.cpp)
  void MatchResults(ExpectedNode& node, const QovRyx::Geometry& geometry);
  void CompareResult(const ExpectedNode& node, ExpectedResult& expected, const Result& result);
  void CompareLinks();
  QovRyx::ResultPlace FindDanglingPlace(const ExpectedNode& node,
                                        const ExpectedResult& expected) const;
  std::string FindDanglingFault(const ExpectedNode& node, const ExpectedResult& expected,
                                const Result& result) const;
  // Values (RecountValues.cpp)
  void CompareValues();
  void CompareArrays(bool integerKinds);
  void CompareArray(const ExpectedNode& node, ExpectedResult& expected, const Result& result);
  void CompareSets(ExpectedNode& node);
  // Views and history (RecountViews.cpp)
  void CompareViews();
  void ComparePaths();
  void CompareHistory();

  void Report(ExpectedNode& node, const std::string& text);
  void ReportUnlessEmpty(ExpectedNode& node, const char* text, const std::string& details);
  void Report(const ExpectedNode& node, ExpectedResult& result, const std::string& text);
  void Report(std::size_t input, const std::string& subject, const std::string& text);
  Difference About(const ExpectedNode& node, const std::string& text) const;

  ExpectedModel& mModel;
  const std::vector<InputFile>& mInputs;
  const QovRyx::Tree& mOutput;
  Differences& mDifferences;
};

}  // namespace Qov::Tools
