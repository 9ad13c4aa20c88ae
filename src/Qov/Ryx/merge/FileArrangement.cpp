#include "Qov/Ryx/FileArrangement.h"

#include <charconv>
#include <cstddef>
#include <limits>
#include <system_error>
#include <utility>

#include "IntroSort.h"

namespace QovRyx {
namespace {

constexpr std::uint64_t kHighestNumber = std::numeric_limits<std::uint64_t>::max();

/// Returns the number that the digits stand for, or the highest number if it needs more than 64
/// bits.
std::uint64_t ParseNumber(const std::string& digits) {
  std::uint64_t number = kHighestNumber;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return result.ec == std::errc() ? number : kHighestNumber;
}

}  // namespace

NameTokens::NameTokens(const std::string& path, std::uint64_t position)
    : mFullName(path),
      mExtension(".ryx"),
      mStem(path),
      mNumber(kHighestNumber),
      mPosition(position) {
  const std::size_t extension = mStem.rfind(mExtension);
  if (extension != std::string::npos) mStem.erase(extension);
  const std::size_t last = mStem.find_last_not_of("0123456789");
  if (last == std::string::npos) return;
  mNumberText = mStem.substr(last + 1);
  mStem.erase(last + 1);
  mNumber = ParseNumber(mNumberText);
}

bool NameTokens::operator<(const NameTokens& other) const {
  const bool sameSeries = mStem == other.mStem && mExtension == other.mExtension &&
                          !mNumberText.empty() && !other.mNumberText.empty();
  return sameSeries ? mNumber < other.mNumber : mPosition < other.mPosition;
}

std::vector<std::string> arrange_files(const std::vector<std::string>& paths) {
  std::vector<NameTokens> tokens;
  tokens.reserve(paths.size());
  for (const std::string& path : paths) tokens.emplace_back(path, tokens.size());
  IntroSort<NameTokens>(tokens).Run();
  std::vector<std::string> arranged;
  arranged.reserve(tokens.size());
  for (NameTokens& token : tokens) arranged.push_back(std::move(token.mFullName));
  return arranged;
}

}  // namespace QovRyx
