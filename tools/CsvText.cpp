#include "CsvText.h"

namespace Qov::Tools {

std::string CsvText(const std::string& text) {
  if (text.find_first_of(",\"") == text.npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted += c == '"' ? "\"\"" : std::string(1, c);
  return quoted + '"';
}

}  // namespace Qov::Tools
