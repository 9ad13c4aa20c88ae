#include "picture/Image.h"

#include <gmock/gmock.h>
#include <png.h>

#include <string>
#include <vector>

#include "Qov/Util/Exception.h"
#include "picture/PngFile.h"
#include "picture/Text.h"

namespace Qov::Tools {
namespace {

constexpr Colour kWhite = {255, 255, 255};
constexpr Colour kBlack = {0, 0, 0};

std::size_t CountDark(const Image& image) {
  const auto& pixels = image.GetPixels();
  return static_cast<std::size_t>(
      std::count_if(pixels.begin(), pixels.end(), [](Colour c) { return c[0] < 128; }));
}

TEST(PngFile, HasThePixelsOfTheImage) {
  Image image(37, 11, kWhite);
  for (int i = 0; i < 37 * 11; ++i) {
    image.At(i % 37, i / 37) = {static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(i * 7),
                                static_cast<std::uint8_t>(i >> 1)};
  }
  const std::string file = EncodePng(image);
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  ASSERT_NE(png_image_begin_read_from_memory(&png, file.data(), file.size()), 0);
  EXPECT_EQ(png.width, 37U);
  EXPECT_EQ(png.height, 11U);
  EXPECT_EQ(png.format, PNG_FORMAT_RGB);
  std::vector<Colour> pixels(std::size_t{37} * 11);
  ASSERT_NE(png_image_finish_read(&png, nullptr, pixels.data(), 0, nullptr), 0);
  EXPECT_EQ(pixels, image.GetPixels());
}

TEST(Image, RefusesImpossibleSizesAndIgnoresPixelsOutside) {
  EXPECT_THROW(Image(0, 5, kWhite), Util::Exception);
  EXPECT_THROW(Image(5, kMostPixels + 1, kWhite), Util::Exception);
  Image image(20, 10, kWhite);
  image.Fill({-5, -5, 7, 100}, kBlack);
  EXPECT_EQ(CountDark(image), 20U);
  image.DrawLine(-1e30, 5, 1e30, 5, kWhite);
  image.Paste(Image(4, 4, kBlack), 18, -2);
  EXPECT_EQ(image.At(18, 1), kBlack);
  EXPECT_EQ(image.At(18, 2), kWhite);
}

TEST(Text, IsMeasuredAsItIsDrawn) {
  for (const char* text : {"Stress", "Größe Żółć", "Напряжение σ", "5 °C ≤ 2 µm²"}) {
    for (const double size : {10.0, 24.0}) {
      Image image(600, 60, kWhite);
      DrawText(image, 10, 10, text, size, kBlack);
      const int end = 10 + static_cast<int>(MeasureText(text, size));
      int last = 0;
      for (int x = 0; x < 600; ++x) {
        for (int y = 0; y < 60; ++y) {
          if (image.At(x, y) != kWhite) last = x;
        }
      }
      EXPECT_NEAR(last, end, size / 4) << text;
      EXPECT_GT(CountDark(image), 20U);
    }
  }
}

TEST(Text, CoversTheAreaOfItsGlyphs) {
  // A full block of text has the area of its outline at any size: the black square of the font.
  double share = 0;
  for (const double size : {20.0, 100.0, 300.0}) {
    Image image(400, 400, kWhite);
    DrawText(image, 20.3, 10, "\u25A0", size, kBlack);
    double area = 0;
    for (const Colour pixel : image.GetPixels()) area += (255 - pixel[0]) / 255.0;
    if (share == 0) share = area / (size * size);
    EXPECT_NEAR(area / (size * size), share, 0.01);
    EXPECT_GT(share, 0.3);
  }
}

TEST(Text, DrawsABoxForEachUnknownCharacterOrByte) {
  const auto draw = [](const char* text) {
    Image image(80, 40, kWhite);
    DrawText(image, 2, 2, text, 20, kBlack);
    return image.GetPixels();
  };
  const auto twoBoxes = draw("\u4E2D\u4E2D");
  EXPECT_NE(twoBoxes, draw("\u4E2D"));
  for (const char* text : {"\xFF\xFE", "\n\t", "\xC3\x01", "\xE2\x82"})
    EXPECT_EQ(draw(text), twoBoxes);
}

TEST(Text, IsCutBetweenCharacters) {
  const std::string name = "Łożysko głównego wału";
  for (int width = 15; width < 250; width += 3) {
    const std::string cut = CutText(name, 14, width);
    EXPECT_LE(MeasureText(cut, 14), width);
    if (cut == name) continue;
    ASSERT_TRUE(cut.ends_with("…"));
    EXPECT_TRUE(name.starts_with(cut.substr(0, cut.size() - 3)));
    EXPECT_EQ(CutText(cut, 14, 1000), cut);
  }
  EXPECT_EQ(CutText(name, 14, 1000), name);
}

}  // namespace
}  // namespace Qov::Tools
