#include "Suggestion.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace Qov::Tools {
namespace {

/// Returns the Levenshtein distance of two words.
std::size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (const char letter : a) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (letter == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

}  // namespace

std::string Suggest(std::string_view word, const std::vector<std::string>& candidates) {
  constexpr std::size_t kLongestWord = 64;  // bounds the time
  std::string best;
  if (word.size() > kLongestWord) return best;
  std::size_t bestDistance = std::max<std::size_t>(3, word.size() / 3 + 1);
  for (const std::string& candidate : candidates) {
    const std::size_t distance = EditDistance(word, candidate);
    if (distance >= bestDistance || distance >= candidate.size()) continue;
    best = candidate;
    bestDistance = distance;
  }
  return best;
}

}  // namespace Qov::Tools
