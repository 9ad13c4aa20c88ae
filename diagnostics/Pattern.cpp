#include "Pattern.h"

#include <fnmatch.h>

#include "CLocale.h"

namespace Qov::Util {

bool MatchesPattern(const std::string& text, const std::string& pattern) {
  const locale_t previous = ::uselocale(GetCLocale());
  const bool matches = ::fnmatch(pattern.c_str(), text.c_str(), FNM_NOESCAPE) == 0;
  ::uselocale(previous);
  return matches;
}

}  // namespace Qov::Util
