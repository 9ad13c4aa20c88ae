#pragma once

#include <string>

#include "picture/Image.h"

namespace Qov::Tools {

/// Returns the image as the bytes of a PNG file: 8 bits, RGB, sRGB. Raises WriteError if the
/// library for PNG files fails.
std::string EncodePng(const Image& image);

}  // namespace Qov::Tools
