#include "ErrorText.h"

#include <algorithm>
#include <new>

#include "Qov/Util/Exception.h"

namespace Qov::Tools {

std::string ErrorText(const std::exception& error) {
  std::string text = error.what();
  if (const auto* ours = dynamic_cast<const Util::Exception*>(&error)) {
    text = ours->GetLogMessage();
  } else if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) {
    text = "Not enough memory";
  }
  while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

std::string FileErrorText(const std::string& path, const std::exception& error) {
  const std::string text = ErrorText(error);
  const std::string subject = path + " ";
  return text.starts_with(subject) ? text.substr(subject.size()) : text;
}

std::string DescribeError(const std::exception& error, const TextStyle& style) {
  return Escape(ErrorText(error), style);
}

}  // namespace Qov::Tools
