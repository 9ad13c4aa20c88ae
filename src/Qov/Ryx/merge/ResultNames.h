#pragma once

#include <string_view>

#include "Qov/Ryx/InstanceNames.h"

namespace QovRyx {

/// The parts of the name of a result.
struct ResultName {
  std::string_view mBase;
  std::string_view mInstance;  ///< Empty if the result is common to all instances.
};

/// Splits a name at its last separator.
inline ResultName SplitResultName(std::string_view name) {
  const std::size_t separator = name.rfind(kInstanceSeparator);
  if (separator == std::string_view::npos) return {name, {}};
  return {name.substr(0, separator), name.substr(separator + 1)};
}

}  // namespace QovRyx
