#include "Qov/Ryx/ViewPoint.h"

namespace QovJbf {

template void CopyToBlock_Versioned(Block& block, const QovRyx::ViewPoint& record);
template void CopyFromBlock_Versioned(Block& block, QovRyx::ViewPoint& record);

}  // namespace QovJbf
