#include "ResultLink.h"

namespace Qov::Tools {

ResultLink::ResultLink(const QovRyx::NodeTree& nodes, const QovRyx::Geometry::VarStruct& variable) {
  const auto* entry = nodes.FindNode(variable.mLink.mNode);
  const QovRyx::Geometry* geometry = entry == nullptr ? nullptr : QovRyx::AsGeometry(*entry);
  if (geometry == nullptr || variable.mLink.mVariable >= geometry->GetVariables().size()) return;
  mGeometry = geometry;
  mVariable = &geometry->GetVariables()[variable.mLink.mVariable];
  mFound = !mVariable->mLinked || variable.mValues.GetLoader() != nullptr;
}

}  // namespace Qov::Tools
