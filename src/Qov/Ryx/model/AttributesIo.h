#pragma once

#include <cstdint>
#include <string>

#include "Qov/Jbf/JbFile.h"
#include "Qov/Ryx/Attributes.h"

/// Reads and writes attribute maps (docs/format.md, "Attributes").
namespace QovUtil {

/// Appends one map. An AttributeMap is converted.
void WriteAttributesToJbf(QovJbf::JbFile& file, const std::string& key,
                          const Attributes& attributes);

/// Replaces `attributes` by one stored map. Keeps the first of several entries with the same name;
/// QovJbf::GetReadLosses counts the others. Raises MismatchError if the columns disagree in length
/// or a type index is unknown, OutOfBounds if a column passes the end of its block, ElementNotFound
/// if the stream does not exist.
void ReadAttributesFromJbf(QovJbf::JbFile& file, const std::string& key, Attributes& attributes);
/// Inserts the entries of one stored map. Raises the same errors.
void ReadAttributesFromJbf(QovJbf::JbFile& file, const std::string& key, AttributeMap& attributes);

}  // namespace QovUtil
