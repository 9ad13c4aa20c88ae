#include "LossText.h"

#include <fmt/format.h>

namespace Qov::Tools {

std::string LossText(const QovJbf::ReadLosses& losses) {
  if (!losses.HasAny()) return "nothing";
  std::string text;
  const auto add = [&text](std::uint64_t count, const char* one, const char* many) {
    if (count == 0) return;
    text += fmt::format("{}{} {}", text.empty() ? "" : " and ", count, count == 1 ? one : many);
  };
  add(losses.mNumEqualKeys, "map entry with the key of an earlier one",
      "map entries with the keys of earlier ones");
  add(losses.mNumCutTexts, "text after a zero byte", "texts after a zero byte");
  return text;
}

}  // namespace Qov::Tools
