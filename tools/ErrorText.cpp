#include "ErrorText.h"

#include <algorithm>
#include <new>

#include "Qov/Util/Exception.h"

namespace Qov::Tools {

std::string DescribeError(const std::exception& error, const TextStyle& style) {
  std::string text = error.what();
  if (const auto* ours = dynamic_cast<const Util::Exception*>(&error)) {
    text = ours->GetLogMessage();
  } else if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) {
    text = "Not enough memory";
  }
  while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
  std::replace(text.begin(), text.end(), '\n', ' ');
  return Escape(text, style);
}

}  // namespace Qov::Tools
