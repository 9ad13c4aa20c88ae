#include "picture/PictureOptions.h"

#include <fmt/format.h>

#include <CLI/App.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>
#include <utility>

#include "Qov/Util/Raise.h"
#include "diagnostics/Printable.h"

namespace Qov::Tools {
namespace {

using ErrorType = Util::Exception::ErrorType;

constexpr const char* kSource = "tools/picture/PictureOptions";
constexpr std::uint32_t kLeastSide = 64;
constexpr std::uint32_t kMostSide = 8192;

[[noreturn]] void RaiseValue(const char* option, const char* wanted, const std::string& word) {
  Util::Raise(kSource, ErrorType::InvalidEnumeration,
              fmt::format("{} takes {}, not {}", option, wanted, Util::Quote(word)));
}

/// Returns the number that is the whole text; nothing for any other text.
template <class T>
std::optional<T> ReadNumber(std::string_view text, int base = 10) {
  T number{};
  const char* end = text.data() + text.size();
  std::from_chars_result result{};
  if constexpr (std::is_integral_v<T>) {
    result = std::from_chars(text.data(), end, number, base);
  } else {
    result = std::from_chars(text.data(), end, number);
    if (!std::isfinite(number)) return std::nullopt;
  }
  return result.ec == std::errc() && result.ptr == end ? std::optional(number) : std::nullopt;
}

/// Returns the texts before and after the first separator.
std::pair<std::string_view, std::string_view> SplitAt(std::string_view text, char separator) {
  const std::size_t place = text.find(separator);
  if (place == text.npos) return {text, {}};
  return {text.substr(0, place), text.substr(place + 1)};
}

void ReadSize(const std::string& text, PictureRequest& request) {
  const auto [first, second] = SplitAt(text, 'x');
  const auto width = ReadNumber<std::uint32_t>(first);
  const auto height = ReadNumber<std::uint32_t>(second);
  if (!width || !height) RaiseValue("--size", "a width and a height in pixels, WxH", text);
  if (std::min(*width, *height) < kLeastSide || std::max(*width, *height) > kMostSide) {
    Util::Raise(
        kSource, ErrorType::OutOfBounds,
        fmt::format("--size {}: each side has {} to {} pixels", text, kLeastSide, kMostSide));
  }
  request.mWidth = *width;
  request.mHeight = *height;
}

std::pair<double, double> ReadRange(const std::string& text) {
  const auto [first, second] = SplitAt(text, ',');
  const auto low = ReadNumber<double>(first);
  const auto high = ReadNumber<double>(second);
  if (!low || !high || *low >= *high) {
    RaiseValue("--range", "the least and the greatest value, A,B", text);
  }
  return {*low, *high};
}

Colour ReadColour(const std::string& text) {
  if (text == "white") return {255, 255, 255};
  if (text == "black") return {0, 0, 0};
  const auto number = text.size() == 7 && text.front() == '#'
                          ? ReadNumber<std::uint32_t>(std::string_view(text).substr(1), 16)
                          : std::nullopt;
  if (!number) RaiseValue("--background", "white, black or #RRGGBB", text);
  return {static_cast<std::uint8_t>(*number >> 16), static_cast<std::uint8_t>(*number >> 8 & 255U),
          static_cast<std::uint8_t>(*number & 255U)};
}

}  // namespace

std::string Lower(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

void PictureOptions::Declare(CLI::App& app) {
  const auto addList = [&](const char* name, std::vector<std::string>& words, const char* help,
                           const char* type) {
    app.add_option(name, words, help)->type_name(type)->allow_extra_args(false);
  };
  const auto addText = [&](const char* name, std::string& text, const char* help,
                           const char* type) {
    return app.add_option(name, text, help)->type_name(type);
  };
  addList("--nodes", mRequest.mNodes, "Only these nodes and their descendants", "PATTERN");
  addList("--result", mRequest.mResults, "Result that colours the parts; several with --sheet",
          "NAME");
  addText("--component", mComponent, "Its component: x, y, z, magnitude or a number", "WHICH");
  addList("--step", mRequest.mSteps, "Step or load case, by name or number; several with --sheet",
          "PATTERN");
  addText("--range", mRange, "Range of the colours", "A,B");
  CLI::Option* deform =
      addText("--deform", mRequest.mDeform, "Result that moves the points", "NAME");
  addText("--scale", mScale, "Its scale: a number, or auto, which makes it visible", "F")
      ->needs(deform);
  addText("--view", mRequest.mView, "Where to look from",
          "VIEW:{front,back,left,right,top,bottom,iso}");
  app.add_flag("--edges", mRequest.mEdges, "Draw the edges of the cells");
  CLI::Option* flat = app.add_flag("--flat", mFlat, "One shade for each face");
  app.add_flag("--smooth", mRequest.mSmooth, "Smooth shading of curved surfaces (the default)")
      ->excludes(flat);
  addText("--size", mSize, "Width and height in pixels", "WxH");
  addText("--background", mBackground, "white, black or #RRGGBB", "COLOUR");
}

PictureRequest PictureOptions::MakeRequest() const {
  PictureRequest request = mRequest;
  request.mSmooth = !mFlat;
  request.mComponent = ParseComponent(mComponent);
  if (mScale != "auto") {
    request.mScale = ReadNumber<double>(mScale);
    if (!request.mScale) RaiseValue("--scale", "auto or a number", mScale);
  }
  if (!mRange.empty()) request.mRange = ReadRange(mRange);
  if (!mSize.empty()) ReadSize(mSize, request);
  if (!mBackground.empty()) request.mBackground = ReadColour(mBackground);
  return request;
}

}  // namespace Qov::Tools
