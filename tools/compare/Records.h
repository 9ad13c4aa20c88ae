#pragma once

#include <string>

#include "Qov/Ryx/Group.h"
#include "RecordPrinter.h"

namespace Qov::Tools {

bool HasSameBytes(const QovJbf::Block& a, const QovJbf::Block& b);

/// Returns true if two records are written as the same bytes. Unlike ==, this distinguishes NaNs
/// of different bits, and the two zeros.
template <QovJbf::VersionedRecord T>
bool IsSameRecord(const T& a, const T& b) {
  QovJbf::Block bytesA;
  QovJbf::Block bytesB;
  CopyToBlock(bytesA, a);
  CopyToBlock(bytesB, b);
  return HasSameBytes(bytesA, bytesB);
}

/// Returns the names of the fields that differ between two printed records, at most eight of them;
/// empty if none differs.
std::string NameDifferingFields(const Json& a, const Json& b);

/// Returns the names of the fields that differ, "some bits" for a difference that is not visible
/// in the printed records, or an empty text for equal records.
template <QovJbf::VersionedRecord T>
std::string NameDifferingFields(const T& a, const T& b) {
  if (IsSameRecord(a, b)) return "";
  const std::string fields = NameDifferingFields(PrintRecord(a), PrintRecord(b));
  return fields.empty() ? "some bits" : fields;
}

/// Returns the names of the fields of a group that differ, to the last bit, without its name and
/// attributes.
std::string NameDifferingFields(const QovRyx::Group& a, const QovRyx::Group& b);

}  // namespace Qov::Tools
