#include "LinkTarget.h"

namespace Qov::Tools {

LinkTarget::LinkTarget(const QovRyx::NodeTree& nodes, const QovRyx::Geometry::VarStruct& linked) {
  mVariable = QovRyx::FindVariable(nodes, linked.mLink.GetPlace());
  if (mVariable == nullptr) return;
  mGeometry = QovRyx::AsGeometry(nodes.GetReqNode(linked.mLink.GetPlace().mNode));
  mHasValues = !mVariable->mLink.IsLinked() || linked.mValues.GetLoader() != nullptr;
}

}  // namespace Qov::Tools
