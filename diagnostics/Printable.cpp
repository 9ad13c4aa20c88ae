#include "Printable.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "Utf8.h"

namespace Qov::Util {
namespace {

struct Range {
  char32_t mFirst;
  char32_t mLast;
};

constexpr std::array kUnsafeRanges = {
    Range{0x00, 0x1F},        // C0
    Range{0x7F, 0x9F},        // DEL and C1
    Range{0xAD, 0xAD},        // soft hyphen
    Range{0x034F, 0x034F},    // grapheme joiner
    Range{0x061C, 0x061C},    // Arabic letter mark
    Range{0x115F, 0x1160},    // Hangul fillers
    Range{0x17B4, 0x17B5},    // Khmer inherent vowels
    Range{0x180B, 0x180F},    // Mongolian selectors and separator
    Range{0x200B, 0x200F},    // zero width, direction marks
    Range{0x2028, 0x202E},    // line and paragraph separators, embeddings, overrides
    Range{0x2060, 0x206F},    // word joiner, invisible operators, isolates
    Range{0x3164, 0x3164},    // Hangul filler
    Range{0xD800, 0xDFFF},    // surrogates
    Range{0xFDD0, 0xFDEF},    // noncharacters
    Range{0xFE00, 0xFE0F},    // variation selectors
    Range{0xFEFF, 0xFEFF},    // byte order mark
    Range{0xFFA0, 0xFFA0},    // halfwidth Hangul filler
    Range{0xFFF0, 0xFFFB},    // reserved, annotations
    Range{0x1BCA0, 0x1BCA3},  // shorthand format controls
    Range{0x1D173, 0x1D17A},  // musical format controls
    Range{0xE0000, 0xE0FFF},  // tags, variation selectors, reserved
};

template <class IsKept>
std::string EscapeUnless(std::string_view text, IsKept isKept) {
  std::string printable;
  while (!text.empty()) {
    const Utf8Character character = DecodeFirst(text);
    const std::string_view bytes = text.substr(0, std::max<std::size_t>(character.mLength, 1));
    const bool isSafe =
        character.mLength > 0 && (isKept(bytes) || !IsUnsafeToPrint(character.mCode));
    printable += isSafe ? std::string(bytes) : HexBytes(bytes);
    text.remove_prefix(bytes.size());
  }
  return printable;
}

}  // namespace

bool IsUnsafeToPrint(char32_t code) {
  const bool isNoncharacter = (code & 0xFFFE) == 0xFFFE;  // the last two of each plane
  return isNoncharacter ||
         std::any_of(kUnsafeRanges.begin(), kUnsafeRanges.end(), [code](const Range& range) {
           return code >= range.mFirst && code <= range.mLast;
         });
}

std::string MakePrintable(std::string_view text) {
  return EscapeUnless(text, [](std::string_view bytes) { return bytes == "\n" || bytes == "\t"; });
}

std::string Quote(std::string_view name) { return '"' + EscapeName(name) + '"'; }

std::string EscapeName(std::string_view name) {
  return EscapeUnless(name, [](std::string_view) { return false; });
}

}  // namespace Qov::Util
