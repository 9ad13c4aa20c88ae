#include "FitText.h"

#include "diagnostics/Utf8.h"

namespace Qov::Tools {
namespace {

/// Returns the first `width` characters.
std::string_view First(std::string_view text, std::size_t width) {
  std::size_t end = 0;
  for (; end < text.size(); ++end) {
    if (IsUtf8Continuation(text[end])) continue;
    if (width-- == 0) break;
  }
  return text.substr(0, end);
}

/// Returns the last `width` characters.
std::string_view Last(std::string_view text, std::size_t width) {
  std::size_t begin = text.size();
  while (begin > 0 && width > 0) {
    if (!IsUtf8Continuation(text[--begin])) --width;
  }
  return text.substr(begin);
}

}  // namespace

std::string_view Ellipsis(const TextStyle& style) { return style.mUtf8 ? "\u2026" : "..."; }

std::string FitStart(std::string_view text, std::size_t width, const TextStyle& style) {
  if (DisplayWidth(text) <= width) return std::string(text);
  const std::string_view ellipsis = First(Ellipsis(style), width);
  return std::string(ellipsis).append(Last(text, width - DisplayWidth(ellipsis)));
}

std::string FitEnd(std::string_view text, std::size_t width, const TextStyle& style) {
  if (DisplayWidth(text) <= width) return std::string(text);
  const std::string_view ellipsis = First(Ellipsis(style), width);
  return std::string(First(text, width - DisplayWidth(ellipsis))).append(ellipsis);
}

std::string FitMiddle(std::string_view text, std::size_t width, const TextStyle& style) {
  if (DisplayWidth(text) <= width) return std::string(text);
  const std::string_view ellipsis = First(Ellipsis(style), width);
  const std::size_t kept = width - DisplayWidth(ellipsis);
  return std::string(First(text, kept - kept / 2)).append(ellipsis).append(Last(text, kept / 2));
}

std::string FitLine(std::string_view line, const TextStyle& style) {
  return style.mTerminal ? FitEnd(line, style.mWidth, style) : std::string(line);
}

}  // namespace Qov::Tools
