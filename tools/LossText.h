#pragma once

#include <string>

#include "Qov/Jbf/BlockIo.h"

namespace Qov::Tools {

/// Returns a text for the data that readers leave out: "1 map entry with the key of an earlier one
/// and 2 texts after a zero byte", or "nothing".
std::string LossText(const QovJbf::ReadLosses& losses);

}  // namespace Qov::Tools
