#include "stats/ResultStatistics.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>

#include "ErrorText.h"
#include "Qov/Ryx/Progress.h"
#include "Qov/Ryx/ValueOwners.h"
#include "ResultPattern.h"
#include "VerifiedValues.h"
#include "diagnostics/Utf8.h"
#include "merge/ArrayNames.h"
#include "model/ReadPlan.h"

namespace Qov::Tools {
namespace {

constexpr std::size_t kVectorWidth = 3;

std::size_t CountComponents(const QovRyx::NumericArray& values) {
  return std::max<std::size_t>(values.GetWidth(), 1);
}

/// Returns where the array of a result is stored, for sorting.
std::uint64_t GetOffset(const QovRyx::Geometry::VarStruct& result) {
  const QovRyx::DataLoader* loader = result.mValues.GetLoader().get();
  return loader == nullptr ? 0 : loader->GetOffset();
}

/// Adds the arrays that NameItems may read, so that their blocks are kept until then.
void AddIds(const QovRyx::NodeTree& nodes, QovJbf::ReadAhead::Parts& parts) {
  QovRyx::ForEachGeometry(nodes, [&parts](std::uint32_t, const QovRyx::Geometry& geometry) {
    for (const QovRyx::Geometry::VarStruct& variable : geometry.GetVariables()) {
      const std::string_view base = QovRyx::SplitName(variable.mName).mBase;
      const bool isIds = base == QovRyx::kNodeIds || base == QovRyx::kElementIds;
      if (isIds && !variable.mLink.IsLinked()) QovRyx::AddPart(variable.mValues, parts);
    }
  });
}

}  // namespace

bool ResultStatistics::IsChosen(const Variable& result) {
  if (mPatterns.empty()) return !QovRyx::IsMeshBase(QovRyx::SplitName(result.mName).mBase);
  bool isChosen = false;
  for (std::size_t i = 0; i < mPatterns.size(); ++i) {
    if (!MatchesResult(result.mName, mPatterns[i])) continue;
    mIsUsed[i] = isChosen = true;
  }
  return isChosen;
}

std::vector<ResultStatistics::Task> ResultStatistics::CollectTasks(const QovRyx::NodeTree& nodes) {
  const QovRyx::ValueOwners owners(nodes);
  std::vector<Task> tasks;
  QovRyx::ForEachGeometry(nodes, [&](std::uint32_t id, const QovRyx::Geometry& geometry) {
    for (const Variable& result : geometry.GetVariables()) {
      if (!IsChosen(result)) continue;
      const bool integers = owners.HoldUnsigned(result);
      tasks.push_back({id, &geometry, &result, integers, FindRows(result, integers)});
    }
  });
  std::stable_sort(tasks.begin(), tasks.end(), [](const Task& left, const Task& right) {
    return GetOffset(*left.mpResult) < GetOffset(*right.mpResult);
  });
  return tasks;
}

QovJbf::ReadAhead::Parts ResultStatistics::PlanReads(const QovRyx::NodeTree& nodes) {
  std::vector<const Variable*> results;
  QovRyx::ForEachGeometry(nodes, [&](std::uint32_t, const QovRyx::Geometry& geometry) {
    for (const Variable& result : geometry.GetVariables()) {
      if (IsChosen(result)) results.push_back(&result);
    }
  });
  std::stable_sort(results.begin(), results.end(), [](const Variable* left, const Variable* right) {
    return GetOffset(*left) < GetOffset(*right);
  });
  QovJbf::ReadAhead::Parts parts;
  for (const Variable* result : results) QovRyx::AddPart(result->mValues, parts);
  AddIds(nodes, parts);
  return parts;
}

std::vector<std::size_t> ResultStatistics::FindRows(const Variable& result, bool integers) {
  const std::size_t numComponents = CountComponents(result.mValues);
  std::vector<std::size_t> rows;
  for (std::size_t i = 0; i < numComponents; ++i) rows.push_back(FindRow(result, i, integers));
  if (numComponents == kVectorWidth) {
    rows.push_back(FindRow(result, StatisticsRow::kMagnitude, integers));
  }
  return rows;
}

std::size_t ResultStatistics::FindRow(const Variable& result, std::size_t component,
                                      bool integers) {
  const std::uint8_t width = result.mValues.GetWidth();
  const auto [found, isNew] =
      mPositions.try_emplace({result.mName, width, component, integers}, mRows.size());
  if (isNew) {
    StatisticsRow& row = mRows.emplace_back();
    row.mResult = result.mName;
    row.mWidth = width;
    row.mComponent = component;
    row.mIntegers = integers && component != StatisticsRow::kMagnitude;
  }
  return found->second;
}

template <class T>
std::vector<ValueStatistics> ResultStatistics::ReadComponents(const QovRyx::NumericArray& array,
                                                              std::vector<T>& values) {
  ReadVerifiedValues(array, values);
  return SummarizeComponents(values, CountComponents(array));
}

ResultStatistics::Array ResultStatistics::Read(const Task& task) {
  const QovRyx::NumericArray& values = task.mpResult->mValues;
  Array array;
  array.mpLoader = values.GetLoader().get();
  try {
    array.mComponents =
        task.mIntegers ? ReadComponents(values, mIntegers) : ReadComponents(values, mFloats);
  } catch (const std::exception& error) {
    array.mTrouble = ErrorText(error);
  }
  return array;
}

void ResultStatistics::Add(std::size_t file, const QovRyx::NodeTree& nodes) {
  const std::vector<Task> tasks = CollectTasks(nodes);
  std::uint64_t numBytes = 0;
  for (const Task& task : tasks) numBytes += task.mpResult->mValues.GetSize();
  const QovRyx::ProgressReport progress(numBytes);
  mHolders.assign(mRows.size(), {nullptr, nullptr});
  Array array;
  std::size_t numComponents = 0;
  for (const Task& task : tasks) {
    const QovRyx::NumericArray& values = task.mpResult->mValues;
    QovRyx::ProgressReport::Advance(values.GetSize());
    const bool isKnown = values.GetLoader() && values.GetLoader().get() == array.mpLoader &&
                         numComponents == CountComponents(values);
    if (!isKnown) array = Read(task);
    numComponents = CountComponents(values);
    AddArray(file, task, array);
  }
  NameItems(file, nodes);
}

void ResultStatistics::AddArray(std::size_t file, const Task& task, const Array& array) {
  if (!array.mTrouble.empty()) {
    mTrouble.push_back({file, fmt::format("node {}, result {}: {}", task.mNode,
                                          Shortened(task.mpResult->mName), array.mTrouble)});
    return;
  }
  for (std::size_t i = 0; i < array.mComponents.size(); ++i) {
    const std::size_t row = task.mRows[i];
    const ValueStatistics::Replaced replaced = mRows[row].mValues.Add(array.mComponents[i]);
    if (replaced.mLeast) mHolders[row].first = &task;
    if (replaced.mGreatest) mHolders[row].second = &task;
  }
}

/// Names the places of the extremes that this file has. The ids are read only for them, and once
/// for all results of a mesh.
void ResultStatistics::NameItems(std::size_t file, const QovRyx::NodeTree& nodes) {
  struct Extreme {
    const Task* mpTask;
    std::uint64_t mItem;
    ValuePlace* mpPlace;
  };
  std::vector<Extreme> extremes;
  for (std::size_t i = 0; i < mRows.size(); ++i) {
    StatisticsRow& row = mRows[i];
    const auto& [least, greatest] = mHolders[i];
    if (least != nullptr) extremes.push_back({least, row.mValues.GetLeastItem(), &row.mLeast});
    if (greatest == nullptr) continue;
    extremes.push_back({greatest, row.mValues.GetGreatestItem(), &row.mGreatest});
  }
  const auto mesh = [](const Extreme& extreme) {
    const std::string_view name = extreme.mpTask->mpResult->mName;
    return std::pair(extreme.mpTask->mNode, QovRyx::SplitName(name).mInstance);
  };
  std::stable_sort(extremes.begin(), extremes.end(),
                   [&mesh](const Extreme& a, const Extreme& b) { return mesh(a) < mesh(b); });
  ItemNames names(nodes);
  for (const auto& [task, item, place] : extremes) {
    *place = {file, task->mNode, task->mpGeometry->GetName(),
              names.Find(*task->mpGeometry, *task->mpResult, item)};
  }
  mHolders.clear();
  if (!names.GetTrouble().empty()) mTrouble.push_back({file, names.GetTrouble()});
}

const std::string* ResultStatistics::FindUnusedPattern() const {
  const auto unused = std::find(mIsUsed.begin(), mIsUsed.end(), false);
  return unused == mIsUsed.end() ? nullptr : &mPatterns[std::size_t(unused - mIsUsed.begin())];
}

}  // namespace Qov::Tools
