#include "ModelCounts.h"

#include "LinkTarget.h"
#include "Qov/Ryx/InstanceNames.h"

namespace Qov::Tools {

ModelCounts::ModelCounts(const QovRyx::NodeTree& nodes) {
  for (const auto& [id, entry] : nodes) {
    ++mNodes[entry.mData ? entry.mData->GetType() : ""];
    if (const auto* geometry = QovRyx::AsGeometry(entry)) CountResults(nodes, *geometry);
    const auto* sets = dynamic_cast<const QovRyx::NodeSets*>(entry.mData.get());
    if (sets != nullptr) mNumSets += sets->GetNumSets();
  }
}

void ModelCounts::CountResults(const QovRyx::NodeTree& nodes, const QovRyx::Geometry& geometry) {
  for (const auto& variable : geometry.GetVariables()) {
    ++mNumResults;
    if (QovRyx::HasInstancePart(variable.mName)) {
      mInstances.insert(
          variable.mName.substr(variable.mName.rfind(QovRyx::kInstanceSeparator) + 1));
    }
    if (variable.mLink.IsLinked()) {
      ++mNumLinked;
      mNumLost += LinkTarget(nodes, variable).mHasValues ? 0 : 1;
    } else {
      mNumValues += variable.mValues.GetNumElements();
    }
  }
}

std::uint64_t ModelCounts::GetNumNodes() const {
  std::uint64_t sum = 0;
  for (const auto& [type, count] : mNodes) sum += count;
  return sum;
}

}  // namespace Qov::Tools
