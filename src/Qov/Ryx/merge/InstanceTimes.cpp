#include "InstanceTimes.h"

#include <cstddef>
#include <cstdint>

#include "Qov/Ryx/InstanceNames.h"
#include "model/TimeAttribute.h"

namespace QovRyx {

void TakeGroupTimes(Tree& tree) {
  GroupTimes times(tree.GetNodes());
  QovUtil::Attributes last;
  ForEachGeometry(tree.GetNodes(), [&](std::uint32_t id, Geometry& geometry) {
    const Group* group = times.Find(id);
    if (group == nullptr) return;
    const QovUtil::AttributeValue time = *GetTimeValue(group->mAttributes);
    for (std::size_t i = 0; i != geometry.GetVariables().size(); ++i) {
      Geometry::VarStruct& result = geometry.EditVariable(i);
      if (!HasInstancePart(result.mName) || GetTimeValue(result.mAttributes)) continue;
      result.mAttributes.Set(kTimeAttribute, time);
      result.mAttributes.ShareIfEqual(last);  // otherwise each result would store its own copy
      last = result.mAttributes;
    }
  });
}

}  // namespace QovRyx
