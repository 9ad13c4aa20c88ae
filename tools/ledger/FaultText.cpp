#include "FaultText.h"

#include <fmt/format.h>

namespace Qov::Tools {

std::string FaultText(const Fault& fault, const TextStyle& style) {
  std::string text;
  const auto add = [&](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
  if (fault.mNode != 0) {
    add(fmt::format("node {} {}", fault.mNode, Escape(fault.mNodeName, style)));
  }
  if (!fault.mSubject.empty()) add(Escape(fault.mSubject, style));
  if (!fault.mInput.empty()) add("from " + Escape(fault.mInput, style));
  return text + (text.empty() ? "" : ": ") + Escape(fault.mText, style);
}

}  // namespace Qov::Tools
