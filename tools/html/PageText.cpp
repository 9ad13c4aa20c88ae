#include "html/PageText.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "Terminal.h"
#include "html/Page.h"

namespace Qov::Tools {
namespace {

/// Returns the text for the content of an element.
std::string EscapeElement(const std::string& text) {
  std::string escaped;
  for (const char letter : text) {
    if (letter == '<') {
      escaped += "&lt;";
    } else if (letter == '&') {
      escaped += "&amp;";
    } else {
      escaped += letter;
    }
  }
  return escaped;
}

std::string TitleText(std::string_view title) { return EscapeElement(PageText(title)); }

}  // namespace

std::string PageText(std::string_view text) {
  TextStyle style;
  style.mUtf8 = true;
  return Escape(text, style);
}

std::string FormatManifest(const Json& manifest) {
  std::string text;
  for (const char letter : manifest.dump(-1, ' ', true, Json::error_handler_t::replace)) {
    if (letter == '<' || letter == '>' || letter == '&') {
      text += fmt::format("\\u{:04x}", static_cast<unsigned>(letter));
    } else {
      text += letter;
    }
  }
  return text;
}

Json MakeManifest(std::string_view title) {
  return {{"format", 1},
          {"title", PageText(title)},
          {"program", "ryx " QOV_TOOLS_VERSION},
          {"notes", Json::array()},
          {"nodes", Json::array()},
          {"steps", Json::array()},
          {"parts", Json::array()},
          {"results", Json::array()},
          {"show", {{"result", nullptr}, {"component", 0}, {"step", 0}}},
          {"range", nullptr},
          {"tables", Json::array()},
          {"diff", nullptr},
          {"report", nullptr}};
}

std::uint64_t GetFrameSize(std::string_view title) {
  const PageTemplate page = GetPageTemplate();
  return page.mBeforeTitle.size() + TitleText(title).size() + page.mBeforeManifest.size() +
         page.mBeforeBuffers.size() + page.mEnd.size();
}

void WritePageBegin(std::string_view title, const Json& manifest, SafeOutput& output) {
  const PageTemplate page = GetPageTemplate();
  output.Write(page.mBeforeTitle);
  output.Write(TitleText(title));
  output.Write(page.mBeforeManifest);
  output.Write(FormatManifest(manifest));
  output.Write(page.mBeforeBuffers);
}

void WritePageEnd(SafeOutput& output) { output.Write(GetPageTemplate().mEnd); }

}  // namespace Qov::Tools
