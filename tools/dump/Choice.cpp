#include "dump/Choice.h"

#include <fmt/format.h>

#include <charconv>
#include <optional>
#include <system_error>

#include "Qov/Util/Raise.h"
#include "Suggestion.h"
#include "Terminal.h"

namespace Qov::Tools {
namespace {

using ErrorType = Util::Exception::ErrorType;

[[noreturn]] void RaiseNotFound(const std::string& text) {
  Util::Raise("tools/dump/Choice", ErrorType::ElementNotFound, text);
}

std::optional<std::uint64_t> AsNumber(const std::string& word) {
  std::uint64_t number = 0;
  const char* end = word.data() + word.size();
  const auto [stop, error] = std::from_chars(word.data(), end, number);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

std::vector<std::size_t> FindName(const std::vector<Candidate>& candidates,
                                  const std::string& name) {
  std::vector<std::size_t> found;
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    if (candidates[i].mName == name) found.push_back(i);
  }
  return found;
}

[[noreturn]] void RaiseUnknown(const std::vector<Candidate>& candidates, const std::string& word,
                               const std::string& noun) {
  constexpr std::size_t kMost = 10000;  // comparing takes time
  std::vector<std::string> names;
  for (std::size_t i = 0; i < candidates.size() && i < kMost; ++i) {
    names.push_back(candidates[i].mName);
  }
  std::string text = fmt::format("there is no {} \"{}\"", noun, Unescape(word));
  const std::string suggestion = Suggest(Unescape(word), names);
  if (!suggestion.empty()) text += fmt::format(", did you mean \"{}\"?", suggestion);
  RaiseNotFound(text);
}

[[noreturn]] void RaiseAmbiguous(const std::vector<Candidate>& candidates,
                                 const std::vector<std::size_t>& found, const std::string& noun) {
  constexpr std::size_t kMost = 10;
  std::string text = fmt::format("there are {} of the name \"{}\", say which by number: ", noun,
                                 candidates[found.front()].mName);
  for (std::size_t i = 0; i < found.size() && i < kMost; ++i) {
    text += fmt::format("{}{}", i == 0 ? "" : ", ", candidates[found[i]].mNumber);
  }
  RaiseNotFound(text + (found.size() > kMost ? ", ..." : ""));
}

}  // namespace

std::size_t Choose(const std::vector<Candidate>& candidates, const std::string& word,
                   const std::string& noun) {
  const auto number = AsNumber(word);
  for (std::size_t i = 0; number && i < candidates.size(); ++i) {
    if (candidates[i].mNumber == *number) return i;
  }
  std::vector<std::size_t> found = FindName(candidates, Unescape(word));
  if (found.empty()) found = FindName(candidates, word);
  if (found.empty()) RaiseUnknown(candidates, word, noun);
  if (found.size() > 1) RaiseAmbiguous(candidates, found, noun + "s");
  return found.front();
}

std::size_t ChooseResult(const QovRyx::Geometry& geometry, const std::string& word) {
  std::vector<Candidate> candidates;
  for (const auto& variable : geometry.GetVariables()) {
    candidates.push_back({candidates.size(), variable.mName});
  }
  return Choose(candidates, word, "result");
}

}  // namespace Qov::Tools
