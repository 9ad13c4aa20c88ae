#include "ErrorText.h"

#include <algorithm>
#include <new>

#include "Qov/Util/Exception.h"

namespace Qov::Tools {

std::string RestoreNames(std::string_view text) {
  constexpr std::size_t kLength = 4;  // length of \xNN
  std::string restored;
  while (!text.empty()) {
    const std::string_view token = text.substr(0, text.starts_with("\\x") ? kLength : 1);
    restored += token.size() == kLength ? Unescape(token) : std::string(token);
    text.remove_prefix(token.size());
  }
  return restored;
}

std::string ErrorText(const std::exception& error) {
  std::string text = error.what();
  bool hasLines = true;
  if (const auto* ours = dynamic_cast<const Util::Exception*>(&error)) {
    text = ours->GetLogMessage();
    if (!std::string_view(ours->GetFile()).starts_with("tools/")) text = RestoreNames(text);
    // In all other messages a newline is part of a name.
    hasLines = ours->GetType() == Util::Exception::ErrorType::UnknownVersion;
  } else if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) {
    text = "Not enough memory";
  }
  while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
  if (hasLines) std::replace(text.begin(), text.end(), '\n', ' ');
  const auto* concerns = dynamic_cast<const Util::FileContext*>(&error);
  if (concerns != nullptr && !concerns->GetCause().empty()) text += ": " + concerns->GetCause();
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

std::string DescribeErrorOfFile(const std::exception& error, const TextStyle& style) {
  const auto* concerns = dynamic_cast<const Util::FileContext*>(&error);
  const std::string path = concerns == nullptr ? "" : concerns->GetFilePath();
  const std::string text = ErrorText(error);
  const bool namesFile = text.find(path) != text.npos;
  return Escape(namesFile ? text : path + ": " + text, style);
}

}  // namespace Qov::Tools
