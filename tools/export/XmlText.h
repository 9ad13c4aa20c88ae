#pragma once

#include <string>
#include <string_view>

#include "Terminal.h"

namespace Qov::Tools {

/// Returns a name for an attribute of an XML element: bytes that are not UTF-8 and control
/// characters become \xNN.
inline std::string XmlText(std::string_view name) {
  constexpr TextStyle kUtf8{false, true, false, 80};
  std::string text;
  for (const char c : Escape(name, kUtf8)) {
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
  return text;
}

}  // namespace Qov::Tools
