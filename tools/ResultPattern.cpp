#include "ResultPattern.h"

#include <fnmatch.h>

#include <string_view>

#include "Qov/Ryx/InstanceNames.h"
#include "Terminal.h"

namespace Qov::Tools {
namespace {

/// Returns the pattern with the separator in the form that a pipe shows.
std::string PipePattern(const std::string& pattern) {
  constexpr std::string_view kMark = "\u241E";
  const std::string separator = Escape(std::string(1, QovRyx::kInstanceSeparator), {});
  std::string text;
  for (std::size_t i = 0; i < pattern.size();) {
    const bool isMark = std::string_view(pattern).substr(i).starts_with(kMark);
    if (isMark || pattern[i] == QovRyx::kInstanceSeparator) {
      text += separator;
      i += isMark ? kMark.size() : 1;
    } else {
      text += pattern[i++];
    }
  }
  return text;
}

bool FitsText(const std::string& text, const std::string& pattern, const TextStyle& style) {
  return fnmatch(pattern.c_str(), Escape(text, style).c_str(), FNM_NOESCAPE) == 0;
}

/// Returns true if the name matches. A name as shown always matches itself, even if it contains
/// pattern characters, such as "Stress [MPa]".
bool Fits(const std::string& text, const std::string& pattern) {
  constexpr TextStyle kAscii{.mTerminal = true};
  const std::string pipePattern = PipePattern(pattern);
  return text == Unescape(pattern) || FitsText(text, pipePattern, {}) ||
         FitsText(text, pipePattern, kAscii);
}

}  // namespace

bool MatchesResult(const std::string& name, const std::string& pattern) {
  return Fits(name, pattern) ||
         (QovRyx::HasInstancePart(name) &&
          Fits(name.substr(0, name.rfind(QovRyx::kInstanceSeparator)), pattern));
}

}  // namespace Qov::Tools
