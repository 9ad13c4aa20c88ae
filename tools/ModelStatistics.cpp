#include "ModelStatistics.h"

#include <exception>
#include <vector>

#include "ErrorText.h"

namespace Qov::Tools {
namespace {

using QovRyx::Geometry;

template <class T>
ArrayStatistics ReadAndSummarize(const QovRyx::NumericArray& array) {
  std::vector<T> values;
  array.GetValues(values);
  return Summarize(values);
}

ModelStatistics::Entry MakeEntry(const Geometry::VarStruct& variable, const TextStyle& style) {
  ModelStatistics::Entry entry;
  entry.mIntegers = HoldsIntegers(variable);
  try {
    entry.mStatistics = entry.mIntegers ? ReadAndSummarize<std::uint32_t>(variable.mValues)
                                        : ReadAndSummarize<float>(variable.mValues);
  } catch (const std::exception& error) {
    entry.mError = DescribeError(error, style);
  }
  return entry;
}

}  // namespace

bool HoldsIntegers(const Geometry::VarStruct& variable) {
  constexpr std::uint32_t kUnsignedResult = 5;
  return variable.IsIntegerKind() || variable.mKindHighByte == kUnsignedResult;
}

ModelStatistics::ModelStatistics(const QovRyx::NodeTree& nodes, const TextStyle& style) {
  for (const bool integerKinds : {true, false}) {  // so they are stored
    QovRyx::ForEachGeometry(nodes, [&](std::uint32_t, const Geometry& geometry) {
      for (const Geometry::VarStruct& variable : geometry.GetVariables()) {
        const QovRyx::DataLoader* loader = variable.mValues.GetLoader().get();
        if (loader == nullptr || variable.mLinked) continue;
        if (variable.IsIntegerKind() != integerKinds) continue;
        mEntries.emplace(loader, MakeEntry(variable, style));
      }
    });
  }
}

const ModelStatistics::Entry* ModelStatistics::Find(const QovRyx::NumericArray& array) const {
  const auto found = mEntries.find(array.GetLoader().get());
  return found == mEntries.end() ? nullptr : &found->second;
}

}  // namespace Qov::Tools
