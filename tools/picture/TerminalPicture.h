#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "picture/Image.h"

namespace Qov::Tools {

/// The ways to show a picture in a terminal.
enum class TerminalGraphics : std::uint8_t { None, Kitty, Sixel };

/// Asks the controlling terminal which graphics it shows, and waits at most 0.5 s for the answer.
/// Returns None, without waiting, if `descriptor` is not a terminal or if this process is in its
/// background. The answer is not shown.
TerminalGraphics DetectGraphics(int descriptor);

/// Returns what the answer of a terminal to the query of DetectGraphics means.
TerminalGraphics ParseGraphicsAnswer(std::string_view answer);

/// Width and height in pixels.
struct PixelSize {
  std::uint32_t mWidth = 0;
  std::uint32_t mHeight = 0;
};

/// Returns the size for a picture: at most `most`, the width of the terminal, and three quarters of
/// its height.
PixelSize FitTerminal(int descriptor, PixelSize most);

/// Returns the bytes that show a picture.
std::string EncodeForTerminal(const Image& image, TerminalGraphics graphics);

}  // namespace Qov::Tools
