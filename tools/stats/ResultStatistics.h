#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "ItemNames.h"
#include "Qov/Ryx/Tree.h"
#include "container/ReadAhead.h"
#include "stats/ValueStatistics.h"

namespace Qov::Tools {

/// The place of a value.
struct ValuePlace {
  std::size_t mFile = 0;  ///< Position among the files.
  std::uint32_t mNode = 0;
  std::string mNodeName;
  ItemName mItem;
};

/// Statistics of one component of all results of one name.
struct StatisticsRow {
  /// The length of a vector of three elements, as a component.
  static constexpr std::size_t kMagnitude = 256;

  std::string mResult;
  std::uint8_t mWidth = 1;
  std::size_t mComponent = 0;
  bool mIntegers = false;
  ValueStatistics mValues;
  ValuePlace mLeast;  ///< Undefined, like the next, if there are no numbers.
  ValuePlace mGreatest;
};

/// A part of a file that could not be read.
struct StatisticsTrouble {
  std::size_t mFile = 0;
  std::string mText;  ///< Not escaped.
};

/// Statistics of the results of any number of files. Holds one array at a time.
class ResultStatistics {
 public:
  /// The patterns are for MatchesResult. Without patterns the results of all names are taken, and
  /// the mesh arrays are not.
  explicit ResultStatistics(const std::vector<std::string>& patterns)
      : mPatterns(patterns), mIsUsed(patterns.size()) {}

  /// Returns the arrays that Add may read, in the order of reading.
  QovJbf::ReadAhead::Parts PlanReads(const QovRyx::NodeTree& nodes);
  /// Adds the results of a model. Reads their arrays in stored order.
  void Add(std::size_t file, const QovRyx::NodeTree& nodes);

  /// Returns the rows in the order in which the results were found.
  const std::vector<StatisticsRow>& GetRows() const { return mRows; }
  const std::vector<StatisticsTrouble>& GetTrouble() const { return mTrouble; }
  /// Returns the first pattern without a matching result, or null.
  const std::string* FindUnusedPattern() const;

 private:
  using Variable = QovRyx::Geometry::VarStruct;
  /// A result of the current file.
  struct Task {
    std::uint32_t mNode = 0;
    const QovRyx::Geometry* mpGeometry = nullptr;
    const Variable* mpResult = nullptr;
    bool mIntegers = false;
    std::vector<std::size_t> mRows;  ///< By component.
  };
  /// The array that was read last, because linked results share arrays.
  struct Array {
    const QovRyx::DataLoader* mpLoader = nullptr;
    std::vector<ValueStatistics> mComponents;
    std::string mTrouble;
  };

  bool IsChosen(const Variable& result);
  std::vector<Task> CollectTasks(const QovRyx::NodeTree& nodes);
  std::vector<std::size_t> FindRows(const Variable& result, bool integers);
  std::size_t FindRow(const Variable& result, std::size_t component, bool integers);
  template <class T>
  static std::vector<ValueStatistics> ReadComponents(const QovRyx::NumericArray& array,
                                                     std::vector<T>& values);
  Array Read(const Task& task);
  void AddArray(std::size_t file, const Task& task, const Array& array);
  void NameItems(std::size_t file, const QovRyx::NodeTree& nodes);

  const std::vector<std::string>& mPatterns;
  std::vector<bool> mIsUsed;  ///< By pattern.
  std::vector<StatisticsRow> mRows;
  std::map<std::tuple<std::string, std::uint8_t, std::size_t, bool>, std::size_t> mPositions;
  std::vector<StatisticsTrouble> mTrouble;
  /// Results of the current file with the least and greatest values, by row; null if another file
  /// has them.
  std::vector<std::pair<const Task*, const Task*>> mHolders;
  std::vector<std::uint32_t> mIntegers;  ///< The values of one array. Its memory is reused.
  std::vector<float> mFloats;
};

}  // namespace Qov::Tools
