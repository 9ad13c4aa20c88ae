#include "ModelStatistics.h"

#include <algorithm>
#include <exception>
#include <unordered_set>
#include <vector>

#include "ErrorText.h"
#include "VerifiedValues.h"
#include "model/ReadPlan.h"

namespace Qov::Tools {
namespace {

using QovRyx::Geometry;

/// The values of one array. Their memory is reused.
struct Values {
  std::vector<std::uint32_t> mIntegers;
  std::vector<float> mFloats;
};

template <class T>
ArrayStatistics ReadAndSummarize(const QovRyx::NumericArray& array, std::vector<T>& values) {
  ReadVerifiedValues(array, values);
  return Summarize(values);
}

ModelStatistics::Entry MakeEntry(const Geometry::VarStruct& variable, const TextStyle& style,
                                 Values& values) {
  ModelStatistics::Entry entry;
  entry.mIntegers = variable.HoldsUnsigned();
  try {
    entry.mStatistics = entry.mIntegers ? ReadAndSummarize(variable.mValues, values.mIntegers)
                                        : ReadAndSummarize(variable.mValues, values.mFloats);
  } catch (const std::exception& error) {
    entry.mError = DescribeError(error, style);
  }
  return entry;
}

using Loaders = std::unordered_set<const QovRyx::DataLoader*>;

/// Returns the loaders of the shown results. A linked result may have the loader of a geometry that
/// is not shown.
Loaders FindShown(const QovRyx::NodeTree& nodes, const NodeFilter& filter) {
  Loaders loaders;
  QovRyx::ForEachGeometry(nodes, [&](std::uint32_t id, const Geometry& geometry) {
    if (!filter.IsChosen(id)) return;
    for (const Geometry::VarStruct& variable : geometry.GetVariables()) {
      const QovRyx::DataLoader* loader = variable.mValues.GetLoader().get();
      if (loader != nullptr && filter.ShowsResult(variable.mName)) loaders.insert(loader);
    }
  });
  return loaders;
}

/// Returns the results whose arrays are read, in stored order.
std::vector<const Geometry::VarStruct*> FindRead(const QovRyx::NodeTree& nodes,
                                                 const NodeFilter& filter) {
  const Loaders shown = FindShown(nodes, filter);
  std::vector<const Geometry::VarStruct*> results;
  for (const bool integerKinds : {true, false}) {
    QovRyx::ForEachGeometry(nodes, [&](std::uint32_t, const Geometry& geometry) {
      for (const Geometry::VarStruct& variable : geometry.GetVariables()) {
        const QovRyx::DataLoader* loader = variable.mValues.GetLoader().get();
        if (variable.mLink.IsLinked() || !shown.contains(loader)) continue;
        if (variable.IsIntegerKind() == integerKinds) results.push_back(&variable);
      }
    });
  }
  std::stable_sort(results.begin(), results.end(), [](const auto* a, const auto* b) {
    return a->mValues.GetLoader()->GetOffset() < b->mValues.GetLoader()->GetOffset();
  });
  return results;
}

}  // namespace

QovJbf::ReadAhead::Parts ModelStatistics::PlanReads(const QovRyx::NodeTree& nodes,
                                                    const NodeFilter& filter) {
  QovJbf::ReadAhead::Parts parts;
  for (const auto* result : FindRead(nodes, filter)) QovRyx::AddPart(result->mValues, parts);
  return parts;
}

ModelStatistics::ModelStatistics(const QovRyx::NodeTree& nodes, const NodeFilter& filter,
                                 const TextStyle& style) {
  Values values;
  for (const Geometry::VarStruct* result : FindRead(nodes, filter)) {
    mEntries.emplace(result->mValues.GetLoader().get(), MakeEntry(*result, style, values));
  }
}

const ModelStatistics::Entry* ModelStatistics::Find(const QovRyx::NumericArray& array) const {
  const auto found = mEntries.find(array.GetLoader().get());
  return found == mEntries.end() ? nullptr : &found->second;
}

}  // namespace Qov::Tools
