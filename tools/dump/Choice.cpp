#include "dump/Choice.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <system_error>

#include "Qov/Ryx/InstanceNames.h"
#include "Qov/Util/Raise.h"
#include "Suggestion.h"
#include "Terminal.h"
#include "diagnostics/Utf8.h"

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

/// Returns a list such as "Stress, Strain, ..."; `describe` returns the text of one of `count`
/// items.
template <class Describe>
std::string ListText(std::size_t count, Describe describe) {
  constexpr std::size_t kMost = 10;
  std::string text;
  for (std::size_t i = 0; i < std::min(count, kMost); ++i) {
    text += (i == 0 ? "" : ", ") + describe(i);
  }
  return text + (count > kMost ? ", ..." : "");
}

std::string ShortName(const Candidate& candidate) {
  constexpr std::size_t kMost = 80;
  return candidate.mName.empty() ? "(no name)" : Shortened(candidate.mName, kMost);
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
  const auto nameOf = [&](std::size_t i) { return ShortName(candidates[i]); };
  text += fmt::format("{} There {} {} in all{}{}", suggestion.empty() ? "." : "",
                      candidates.size() == 1 ? "is" : "are", candidates.size(),
                      candidates.empty() ? "" : ": ", ListText(candidates.size(), nameOf));
  RaiseNotFound(text);
}

[[noreturn]] void RaiseAmbiguous(const std::vector<Candidate>& candidates,
                                 const std::vector<std::size_t>& found, const std::string& noun) {
  const auto numberOf = [&](std::size_t i) { return std::to_string(candidates[found[i]].mNumber); };
  RaiseNotFound(fmt::format("there are {} of the name \"{}\", say which by number: {}", noun,
                            candidates[found.front()].mName, ListText(found.size(), numberOf)));
}

[[noreturn]] void RaiseSeveralInstances(const std::vector<Candidate>& candidates,
                                        const std::vector<std::size_t>& found,
                                        const std::string& word) {
  const auto describe = [&](std::size_t i) {
    return fmt::format("{} ({})", ShortName(candidates[found[i]]), candidates[found[i]].mNumber);
  };
  RaiseNotFound(fmt::format("\"{}\" has {} instances, say which by name or number: {}",
                            Unescape(word), found.size(), ListText(found.size(), describe)));
}

/// Returns the positions of the results whose names without the instance part are `base`.
std::vector<std::size_t> FindInstances(const std::vector<Candidate>& candidates,
                                       const std::string& base) {
  std::vector<std::size_t> found;
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    const std::string& name = candidates[i].mName;
    const std::size_t separator = name.rfind(QovRyx::kInstanceSeparator);
    if (separator == base.size() && name.starts_with(base)) found.push_back(i);
  }
  return found;
}

bool NamesOneOf(const std::vector<Candidate>& candidates, const std::string& word) {
  const auto number = AsNumber(word);
  const std::string name = Unescape(word);
  return std::any_of(candidates.begin(), candidates.end(), [&](const Candidate& candidate) {
    return number == candidate.mNumber || candidate.mName == name || candidate.mName == word;
  });
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

ChosenResult ChooseResult(const QovRyx::Geometry& geometry, const std::string& word) {
  std::vector<Candidate> candidates;
  for (const auto& variable : geometry.GetVariables()) {
    candidates.push_back({candidates.size(), variable.mName});
  }
  if (!NamesOneOf(candidates, word)) {
    const std::vector<std::size_t> found = FindInstances(candidates, Unescape(word));
    if (found.size() == 1) return {found.front(), true};
    if (!found.empty()) RaiseSeveralInstances(candidates, found, word);
  }
  return {Choose(candidates, word, "result"), false};
}

}  // namespace Qov::Tools
