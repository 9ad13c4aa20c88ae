#pragma once

#include <cstring>
#include <string>

#include "RecordPrinter.h"

namespace Qov::Tools {

/// The names of the fields in which two printed records differ, a few of them; empty if none does.
std::string NameDifferingFields(const Json& a, const Json& b);

/// What differs between two records, to the last bit; empty if nothing does.
template <QovJbf::VersionedRecord T>
std::string DiffRecords(const T& a, const T& b) {
  QovJbf::Block bytesA;
  QovJbf::Block bytesB;
  CopyToBlock(bytesA, a);
  CopyToBlock(bytesB, b);
  if (bytesA.GetSize() == bytesB.GetSize() &&
      std::memcmp(bytesA.GetData(), bytesB.GetData(), bytesA.GetSize()) == 0) {
    return "";
  }
  const std::string fields = NameDifferingFields(PrintRecord(a), PrintRecord(b));
  return fields.empty() ? "some bits" : fields;
}

}  // namespace Qov::Tools
