#pragma once

#include <string>
#include <vector>

#include "check/Finding.h"

namespace Qov::Tools {

/// Finds what the programs drop when they load a file: what follows a zero byte in a text, further
/// entries of one key, types of unknown nodes, bytes that belong to nothing, streams of unknown
/// name. A merge cannot carry it, and a comparison of loaded models cannot see it.
///
/// The file must be one that loads. Of each kind at most 1000 are returned. Returns none for a
/// file that is not a container.
std::vector<Finding> FindUnreadContent(const std::string& path);

}  // namespace Qov::Tools
