#pragma once

#include <string>
#include <vector>

#include "check/Finding.h"

namespace Qov::Tools {

/// Finds the data that the programs drop when they load a file: bytes after a zero byte in a text,
/// further entries with the same key, types of unknown nodes, bytes that are not part of any item,
/// streams of unknown name. A merge cannot carry this data, and a comparison of loaded models
/// cannot see it.
///
/// The file must be one that can be loaded. Returns at most 1000 findings of each kind, and none
/// for a file that is not a container.
std::vector<Finding> FindUnreadContent(const std::string& path);

}  // namespace Qov::Tools
