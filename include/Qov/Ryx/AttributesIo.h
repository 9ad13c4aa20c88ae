#pragma once

#include <string>

#include "Qov/Export.h"
#include "Qov/Jbf/JbFile.h"
#include "Qov/Util/AttributeValue.h"

/// Attribute maps in a stream: six columns, each a vector (docs/format.md, "Attributes").
namespace QovUtil {

QOV_EXPORT void WriteAttributesToJbf(QovJbf::JbFile& file, const std::string& key,
                                     const AttributeMap& attributes);

/// Inserts the entries of one stored map. Raises MismatchError if the columns disagree in length
/// or a type index is unknown, ElementNotFound if there is no such stream.
QOV_EXPORT void ReadAttributesFromJbf(QovJbf::JbFile& file, const std::string& key,
                                      AttributeMap& attributes);

}  // namespace QovUtil
