#pragma once

#include "merge/ArrayNames.h"

namespace QovMesh {

using QovRyx::ArrayName;
using QovRyx::IsMeshBase;
using QovRyx::kConnectivity;
using QovRyx::kCoordinates;
using QovRyx::kElementIds;
using QovRyx::kNodeIds;
using QovRyx::kPartElements;
using QovRyx::kPolylength;
using QovRyx::SplitName;

}  // namespace QovMesh
