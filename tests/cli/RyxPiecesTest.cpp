#include <gmock/gmock.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "Json.h"
#include "Suggestion.h"
#include "Terminal.h"
#include "TextTable.h"
#include "diagnostics/Printable.h"

namespace Qov::Tools {
namespace {

using testing::ElementsAre;

const TextStyle kPipe;
const TextStyle kUtf8Terminal{true, true, true, 80};
const TextStyle kAsciiTerminal{true, false, false, 80};

TEST(RyxEscape, DependsOnTheStyle) {
  struct Case {
    std::string mText, mPipe, mUtf8, mAscii;
  };
  const std::vector<Case> cases = {
      {"Stress\x1ELC1", "Stress\\x1ELC1", "Stress\u241ELC1", "Stress\\x1ELC1"},
      {"Stress\\x1ELC1", "Stress\\\\x1ELC1", "Stress\\\\x1ELC1", "Stress\\\\x1ELC1"},
      {"\u241E", "\\xE2\\x90\\x9E", "\\xE2\\x90\\x9E", "\\xE2\\x90\\x9E"},
      {"\u00E4\u20AC\U0001F600", "\u00E4\u20AC\U0001F600", "\u00E4\u20AC\U0001F600",
       "\\xC3\\xA4\\xE2\\x82\\xAC\\xF0\\x9F\\x98\\x80"},
  };
  for (const Case& text : cases) {
    EXPECT_EQ(Escape(text.mText, kPipe), text.mPipe);
    EXPECT_EQ(Escape(text.mText, kUtf8Terminal), text.mUtf8);
    EXPECT_EQ(Escape(text.mText, kAsciiTerminal), text.mAscii);
  }
}

TEST(RyxEscape, EscapesInvalidUtf8) {
  EXPECT_EQ(Escape("\xC0\xAF", kPipe), "\\xC0\\xAF");                    // overlong
  EXPECT_EQ(Escape("\xE0\x80\xAF", kPipe), "\\xE0\\x80\\xAF");           // overlong
  EXPECT_EQ(Escape("\xED\xA0\x80", kPipe), "\\xED\\xA0\\x80");           // a surrogate
  EXPECT_EQ(Escape("\xF4\x90\x80\x80", kPipe), "\\xF4\\x90\\x80\\x80");  // above U+10FFFF
  EXPECT_EQ(Escape("a\xE2\x82", kPipe), "a\\xE2\\x82");                  // cut off
  EXPECT_EQ(Escape("\xE2(\x82", kPipe), "\\xE2(\\x82");
  EXPECT_EQ(Escape(std::string("\0\x1F\x7F", 3), kUtf8Terminal), "\\x00\\x1F\\x7F");
}

TEST(RyxEscape, EscapesInvisibleCharacters) {
  for (const char32_t code :
       U"\x9F\u00AD\u034F\u061C\u115F\u180E\u200B\u2029\u202E\u2064\u206A\u206F\u3164\uFDD0\uFE0F"
       U"\uFEFF\uFFA0\uFFF9"
       U"\U0001D173\U0001FFFE\U000E0001\U000E0100\U0010FFFF") {
    EXPECT_TRUE(Util::IsUnsafeToPrint(code)) << static_cast<std::uint32_t>(code);
  }
  for (const char32_t code : {U' ', U'~', U'\u00AC', U'\u00E4', U'\u2010', U'\u205F', U'\uFFFD',
                              U'\U0001F600', U'\U000E1000'}) {
    EXPECT_FALSE(Util::IsUnsafeToPrint(code)) << static_cast<std::uint32_t>(code);
  }
}

TEST(RyxEscape, IsUndoneByUnescape) {
  const std::vector<std::string> texts = {"Stress\x1ELC1", "Stress\\x1ELC1", "\u241E",        "\\",
                                          "\\\\x41",       "\xFF\xC3(",      "\u00E4 \u20AC", ""};
  for (const std::string& text : texts) {
    for (const TextStyle& style : {kPipe, kUtf8Terminal, kAsciiTerminal}) {
      EXPECT_EQ(Unescape(Escape(text, style)), text);
    }
  }
  EXPECT_EQ(Unescape("C:\\temp \\x4 \\xG1"), "C:\\temp \\x4 \\xG1");
}

TEST(RyxJson, RepresentsAnyTextAndNumber) {
  const Json document{{"name", JsonText("\x1E\\ \xFF\u00E4\x7F")},
                      {"numbers", {JsonNumber(NAN), JsonNumber(-INFINITY), JsonFloat(0.1F)}}};
  EXPECT_EQ(FormatJson(document),
            "{\n  \"name\": \"\\u001e\\\\\\\\ \\\\xFF\\u00e4\\u007f\",\n"
            "  \"numbers\": [\n    \"NaN\",\n    \"-Infinity\",\n    0.1\n  ]\n}");
}

TEST(RyxTextTable, AlignsColumns) {
  TextTable table({{"NAME"}, {"COUNT", TextTable::Align::Right}, {"EMPTY"}, {"NOTE"}}, 6);
  table.AddRow({"short", "7", "", "a last cell may be long"});
  table.AddRow({"longer than that", "123", "", ""});
  table.AddRow({"\u00E4\u00F6\u00FC", "1000000", "", "x"});
  EXPECT_THAT(table.GetLines(), ElementsAre("NAME   COUNT  NOTE",                     //
                                            "short      7  a last cell may be long",  //
                                            "longer than that",                       //
                                            "         123",                           //
                                            "\u00E4\u00F6\u00FC    1000000",          //
                                            "              x"));
}

TEST(RyxSuggest, FindsTheClosestWord) {
  const std::vector<std::string> words = {"ls", "sample", "--help"};
  EXPECT_EQ(Suggest("sampel", words), "sample");
  EXPECT_EQ(Suggest("l", words), "ls");
  EXPECT_EQ(Suggest("-help", words), "--help");
  EXPECT_EQ(Suggest("merge", words), "");
  EXPECT_EQ(Suggest(std::string(100000, 's'), words), "");
}

}  // namespace
}  // namespace Qov::Tools
