#pragma once

#include <cstdint>
#include <string>

#include "Qov/Export.h"
#include "Qov/Jbf/JbFile.h"
#include "Qov/Ryx/Attributes.h"

/// Attribute maps in a stream: six columns, each a vector (docs/format.md, "Attributes").
namespace QovUtil {

/// Appends one map, which may also be an AttributeMap.
QOV_EXPORT void WriteAttributesToJbf(QovJbf::JbFile& file, const std::string& key,
                                     const Attributes& attributes);

/// Replaces `attributes` by one stored map. Of entries of one name the first one is kept;
/// QovJbf::GetReadLosses counts the others. Raises MismatchError if the columns disagree in length
/// or a type index is unknown, OutOfBounds if a column passes the end of its block, ElementNotFound
/// if there is no such stream.
QOV_EXPORT void ReadAttributesFromJbf(QovJbf::JbFile& file, const std::string& key,
                                      Attributes& attributes);
/// Inserts the entries of one stored map. Raises the same.
QOV_EXPORT void ReadAttributesFromJbf(QovJbf::JbFile& file, const std::string& key,
                                      AttributeMap& attributes);

}  // namespace QovUtil
