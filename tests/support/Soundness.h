#pragma once

#include <string>

#include "check/FileCheck.h"

namespace Qov::Test {

/// Returns true if `ryx check` finds no errors in a file.
inline bool IsSound(const std::string& path) {
  Tools::FileReport report(1);
  try {
    Tools::CheckFile(path, report);
  } catch (const Util::Exception&) {
    return false;
  }
  return report.mFindings.GetNumErrors() == 0;
}

}  // namespace Qov::Test
