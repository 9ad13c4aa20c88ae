#include "ShellText.h"

namespace Qov::Tools {

std::string QuoteForShell(std::string_view text) {
  const bool isPlain = text.find_first_not_of(
                           "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                           "0123456789_-+=:,./@") == text.npos;
  if (isPlain && !text.empty()) return std::string(text);
  std::string quoted = "'";
  for (const char byte : text) {
    if (byte == '\'') quoted += "'\\'";
    quoted += byte;
  }
  return quoted + "'";
}

}  // namespace Qov::Tools
