#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "Terminal.h"

namespace Qov::Tools {

/// Returns a name for an attribute of an XML element: bytes that are not UTF-8 and control
/// characters become \xNN. A backslash stays as it is, because the name may be that of a file.
inline std::string XmlText(std::string_view name) {
  constexpr TextStyle kUtf8{false, true, false, 80};
  std::string text;
  for (std::size_t begin = 0; begin <= name.size();) {
    const std::size_t end = std::min(name.find('\\', begin), name.size());
    for (const char c : Escape(name.substr(begin, end - begin), kUtf8)) {
      switch (c) {
        case '&':
          text += "&amp;";
          break;
        case '<':
          text += "&lt;";
          break;
        case '>':
          text += "&gt;";
          break;
        case '"':
          text += "&quot;";
          break;
        default:
          text += c;
      }
    }
    if (end < name.size()) text += '\\';
    begin = end + 1;
  }
  return text;
}

}  // namespace Qov::Tools
