#include "ErrorText.h"

#include <algorithm>
#include <new>

#include "Qov/Util/Exception.h"
#include "Qov/Util/Printable.h"

namespace Qov::Tools {

std::string ErrorText(const std::exception& error) {
  std::string text = error.what();
  bool hasLines = true;
  if (const auto* ours = dynamic_cast<const Util::Exception*>(&error)) {
    text = ours->GetLogMessage();
    // In any other text a newline belongs to a name.
    hasLines = ours->GetType() == Util::Exception::ErrorType::UnknownVersion;
  } else if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) {
    text = "Not enough memory";
  }
  while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
  if (hasLines) std::replace(text.begin(), text.end(), '\n', ' ');
  const auto* concerns = dynamic_cast<const Util::ConcernsFile*>(&error);
  if (concerns != nullptr && !concerns->GetCause().empty()) text += ": " + concerns->GetCause();
  return text;
}

std::string FileErrorText(const std::string& path, const std::exception& error) {
  const std::string text = ErrorText(error);
  const std::string subject = Util::EscapeName(path) + " ";
  return text.starts_with(subject) ? text.substr(subject.size()) : text;
}

std::string DescribeError(const std::exception& error, const TextStyle& style) {
  return EscapeMessage(ErrorText(error), style);
}

}  // namespace Qov::Tools
