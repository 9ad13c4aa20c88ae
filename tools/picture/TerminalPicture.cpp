#include "picture/TerminalPicture.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <limits>
#include <numeric>
#include <vector>

#include "picture/PngFile.h"

namespace Qov::Tools {
namespace {

/// Asks for the support of kitty graphics, then for the device attributes, which every terminal
/// sends. Attribute 4 is sixel.
constexpr std::string_view kQuery = "\033_Gi=31,s=1,v=1,a=q,t=d,f=24;AAAA\033\\\033[c";
constexpr std::chrono::milliseconds kLongestWait{500};

/// The controlling terminal, which neither shows what is typed nor waits for the end of a line.
class RawTerminal {
 public:
  RawTerminal() : mDescriptor(::open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    // Changing the terminal would stop a process in the background.
    if (mDescriptor < 0 || ::tcgetpgrp(mDescriptor) != ::getpgrp()) return;
    if (::tcgetattr(mDescriptor, &mBefore) != 0) return;
    termios raw = mBefore;
    // Without ISIG, no typed signal ends the program before the settings are restored.
    raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | ISIG);
    raw.c_cc[VMIN] = 0;
    raw.c_cc[VTIME] = 0;
    mIsRaw = ::tcsetattr(mDescriptor, TCSANOW, &raw) == 0;
  }
  ~RawTerminal() {
    if (mIsRaw) ::tcsetattr(mDescriptor, TCSANOW, &mBefore);
    if (mDescriptor >= 0) ::close(mDescriptor);
  }
  RawTerminal(const RawTerminal&) = delete;
  RawTerminal& operator=(const RawTerminal&) = delete;

  /// Sends the query and returns the answer up to the device attributes, or what came in time.
  std::string Ask() const {
    std::string answer;
    if (!mIsRaw || ::write(mDescriptor, kQuery.data(), kQuery.size()) < 0) return answer;
    const auto end = std::chrono::steady_clock::now() + kLongestWait;
    while (!IsComplete(answer)) {
      const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
          end - std::chrono::steady_clock::now());
      pollfd ready{mDescriptor, POLLIN, 0};
      if (left.count() <= 0 || ::poll(&ready, 1, static_cast<int>(left.count())) <= 0) break;
      std::array<char, 256> bytes{};
      const ssize_t count = ::read(mDescriptor, bytes.data(), bytes.size());
      if (count <= 0) break;
      answer.append(bytes.data(), static_cast<std::size_t>(count));
    }
    return answer;
  }

 private:
  static bool IsComplete(const std::string& answer) {
    const std::size_t attributes = answer.find("\033[?");
    return attributes != answer.npos && answer.find('c', attributes) != answer.npos;
  }

  int mDescriptor;
  termios mBefore{};
  bool mIsRaw = false;
};

std::string EncodeBase64(std::string_view bytes) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
    std::uint32_t word = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      word = word << 8 | (k < count ? static_cast<unsigned char>(bytes[i + k]) : 0U);
    }
    for (std::size_t k = 0; k < 4; ++k) {
      text += k <= count ? kDigits[word >> (18 - 6 * k) & 63U] : '=';
    }
  }
  return text;
}

/// Sends the file in pieces of at most 4096 characters, as the protocol demands.
std::string EncodeKitty(const Image& image) {
  constexpr std::size_t kPiece = 4096;
  const std::string text = EncodeBase64(EncodePng(image));
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); i += kPiece) {
    const bool isLast = i + kPiece >= text.size();
    bytes += fmt::format("\033_G{}m={};{}\033\\", i == 0 ? "a=T,f=100," : "", isLast ? 0 : 1,
                         std::string_view(text).substr(i, kPiece));
  }
  return bytes + "\n";
}

/// The colours of an image, at most 256. Colours are compared by the first 5 bits of each channel.
class SixelPalette {
 public:
  explicit SixelPalette(const Image& image) : mNumbers(std::size_t{1} << 15) {
    std::vector<std::uint32_t> counts(mNumbers.size());
    for (const Colour& colour : image.GetPixels()) ++counts[KeyOf(colour)];
    std::vector<std::uint32_t> keys(counts.size());
    std::iota(keys.begin(), keys.end(), 0U);
    std::erase_if(keys, [&](std::uint32_t key) { return counts[key] == 0; });
    std::stable_sort(keys.begin(), keys.end(),
                     [&](std::uint32_t a, std::uint32_t b) { return counts[a] > counts[b]; });
    mKeys.assign(keys.begin(), keys.begin() + static_cast<std::ptrdiff_t>(
                                                  std::min<std::size_t>(keys.size(), 256)));
    for (const std::uint32_t key : keys) mNumbers[key] = FindNearest(key);
  }

  std::size_t GetSize() const { return mKeys.size(); }
  std::uint8_t NumberOf(const Colour& colour) const { return mNumbers[KeyOf(colour)]; }
  /// Returns a channel in percent.
  std::uint32_t GetPercent(std::size_t number, std::uint32_t channel) const {
    return Channel(mKeys[number], channel) * 100 / 31;
  }

 private:
  static std::uint32_t KeyOf(const Colour& c) {
    return std::uint32_t{c[0]} >> 3 << 10 | std::uint32_t{c[1]} >> 3 << 5 |
           std::uint32_t{c[2]} >> 3;
  }
  static std::uint32_t Channel(std::uint32_t key, std::uint32_t channel) {
    return key >> (10 - 5 * channel) & 31U;
  }
  std::uint8_t FindNearest(std::uint32_t key) const {
    std::size_t best = 0;
    int least = std::numeric_limits<int>::max();
    for (std::size_t i = 0; i < mKeys.size() && least > 0; ++i) {
      int distance = 0;
      for (std::uint32_t k = 0; k < 3; ++k) {
        const int step = static_cast<int>(Channel(key, k)) - static_cast<int>(Channel(mKeys[i], k));
        distance += step * step;
      }
      if (distance >= least) continue;
      least = distance;
      best = i;
    }
    return static_cast<std::uint8_t>(best);
  }

  std::vector<std::uint32_t> mKeys;    ///< The colours of the palette.
  std::vector<std::uint8_t> mNumbers;  ///< Position in the palette, by key.
};

/// Appends one row of a band in one colour; repeated characters are counted.
void AppendSixels(const std::vector<char>& sixels, std::string& bytes) {
  for (std::size_t i = 0; i < sixels.size();) {
    std::size_t end = i;
    while (end < sixels.size() && sixels[end] == sixels[i]) ++end;
    const std::size_t count = end - i;
    if (count > 3) {
      bytes += fmt::format("!{}{}", count, sixels[i]);
    } else {
      bytes.append(count, sixels[i]);
    }
    i = end;
  }
}

/// Bands of six rows; each band is drawn once for each of its colours.
std::string EncodeSixel(const Image& image) {
  const SixelPalette palette(image);
  std::string bytes = fmt::format("\033Pq\"1;1;{};{}", image.GetWidth(), image.GetHeight());
  for (std::size_t i = 0; i < palette.GetSize(); ++i) {
    bytes += fmt::format("#{};2;{};{};{}", i, palette.GetPercent(i, 0), palette.GetPercent(i, 1),
                         palette.GetPercent(i, 2));
  }
  const auto width = static_cast<std::size_t>(image.GetWidth());
  for (int top = 0; top < image.GetHeight(); top += 6) {
    std::array<std::vector<char>, 256> rows;
    for (int y = top; y < std::min(top + 6, image.GetHeight()); ++y) {
      for (int x = 0; x < image.GetWidth(); ++x) {
        auto& row = rows[palette.NumberOf(image.At(x, y))];
        if (row.empty()) row.assign(width, '?');
        char& sixel = row[static_cast<std::size_t>(x)];
        sixel = static_cast<char>(((sixel - '?') | 1 << (y - top)) + '?');
      }
    }
    for (std::size_t i = 0; i < rows.size(); ++i) {
      if (rows[i].empty()) continue;
      bytes += fmt::format("#{}", i);
      AppendSixels(rows[i], bytes);
      bytes += '$';
    }
    bytes += '-';
  }
  return bytes + "\033\\\n";
}

}  // namespace

TerminalGraphics ParseGraphicsAnswer(std::string_view answer) {
  if (answer.find("\033_Gi=31;OK") != answer.npos) return TerminalGraphics::Kitty;
  const std::size_t start = answer.find("\033[?");
  if (start == answer.npos) return TerminalGraphics::None;
  const std::string_view rest = answer.substr(start + 3);
  const std::string attributes = ";" + std::string(rest.substr(0, rest.find('c'))) + ";";
  const bool hasSixel = attributes.find(";4;") != attributes.npos;
  return hasSixel ? TerminalGraphics::Sixel : TerminalGraphics::None;
}

TerminalGraphics DetectGraphics(int descriptor) {
  if (::isatty(descriptor) != 1) return TerminalGraphics::None;
  return ParseGraphicsAnswer(RawTerminal().Ask());
}

PixelSize FitTerminal(int descriptor, PixelSize most) {
  winsize size{};
  if (::ioctl(descriptor, TIOCGWINSZ, &size) != 0 || size.ws_xpixel == 0 || size.ws_ypixel == 0) {
    return {std::min(most.mWidth, 800U), std::min(most.mHeight, 600U)};
  }
  constexpr std::uint32_t kLeast = 64;
  return {std::max(kLeast, std::min<std::uint32_t>(most.mWidth, size.ws_xpixel)),
          std::max(kLeast, std::min<std::uint32_t>(most.mHeight, size.ws_ypixel * 3U / 4U))};
}

std::string EncodeForTerminal(const Image& image, TerminalGraphics graphics) {
  return graphics == TerminalGraphics::Kitty ? EncodeKitty(image) : EncodeSixel(image);
}

}  // namespace Qov::Tools
