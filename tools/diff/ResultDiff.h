#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "Qov/Ryx/ValueOwners.h"
#include "StoredValues.h"
#include "diff/NodeMatching.h"

namespace Qov::Tools {

/// Compares the results of the geometries that are in both models: first their descriptors, then
/// their values, two arrays at a time, in the stored order of A.
class ResultDiff {
 public:
  ResultDiff(const QovRyx::NodeTree& a, const QovRyx::NodeTree& b, const NodeMatching& matching,
             const DiffOptions& options, DiffReport& report)
      : mOwnersA(a), mOwnersB(b), mMatching(matching), mOptions(options), mReport(report) {
    if (options.mNamesIds) mItemNames.emplace(a);
  }

  /// Matches results of the same name in order. Call it for all pairs of geometries before the
  /// other functions.
  void Match(const NodePair& pair, const QovRyx::Geometry& a, const QovRyx::Geometry& b);
  void CompareDescriptors(const NodePair& pair, const QovRyx::Geometry& a,
                          const QovRyx::Geometry& b);
  /// Adds the differing values to the report, next to the other differences of their results.
  void CompareAllValues();

 private:
  using Variable = QovRyx::Geometry::VarStruct;
  static constexpr std::uint32_t kUnmatched = 0xFFFFFFFF;

  struct ResultPair {
    const NodePair* mNodes = nullptr;
    const Variable* mA = nullptr;
    const Variable* mB = nullptr;
    std::size_t mPositionA = 0;
    std::size_t mPositionB = 0;
  };
  struct Task {
    ResultPair mResults;
    std::size_t mNumBefore = 0;  ///< Position of its difference in the report.
  };
  /// The positions in B of the results of a geometry of A.
  struct Matched {
    std::uint32_t mNodeB = 0;
    std::vector<std::uint32_t> mPositions;
    bool mIsInOrder = true;
  };
  struct ArrayComparison {
    ValueComparison mValues;
    std::optional<ValueNorms> mNorms;
    std::string mTrouble;  ///< The reason why the arrays cannot be compared, not escaped; or empty.
  };

  void CompareResult(const ResultPair& results);
  void CompareShape(const ResultPair& results);
  bool LeadToTheSame(const Variable& a, const Variable& b) const;
  std::uint64_t CountBytesToCompare() const;
  ArrayComparison ReadAndCompare(const Variable& a, const Variable& b, bool integers,
                                 const Tolerance* tolerance);
  ArrayComparison CompareValuesOnce(const Task& task);
  ModelDifference MakeValueDifference(const ResultPair& results, const ArrayComparison& comparison);
  void ReportOnly(const NodePair& pair, const Variable& variable, std::size_t position, bool inA);
  ModelDifference MakeDifference(const ResultPair& results, const char* code,
                                 std::string text) const;
  void Add(const ResultPair& results, const char* code, std::string text);

  QovRyx::ValueOwners mOwnersA;
  QovRyx::ValueOwners mOwnersB;
  const NodeMatching& mMatching;
  const DiffOptions& mOptions;
  DiffReport& mReport;
  std::unordered_map<std::uint32_t, Matched> mMatched;  ///< By the id of A's node.
  std::vector<Task> mTasks;
  StoredValues mValuesA;
  StoredValues mValuesB;
  std::optional<ItemNames> mItemNames;  ///< Of A.
  std::map<std::tuple<const QovRyx::DataLoader*, const QovRyx::DataLoader*, const Tolerance*, bool>,
           ArrayComparison>
      mCompared;                                   ///< Results for linked arrays.
  std::unordered_set<const Variable*> mDiffering;  ///< Results of A.
};

}  // namespace Qov::Tools
