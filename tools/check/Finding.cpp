#include "check/Finding.h"

#include <fmt/format.h>

#include <utility>

#include "Plural.h"
#include "diagnostics/Utf8.h"

namespace Qov::Tools {
namespace {

void Append(std::string& text, const std::string& part) {
  if (!text.empty()) text += ", ";
  text += part;
}

std::string NamedText(const char* kind, const Place::Named& named) {
  const std::string name = named.mName.empty() ? "" : " " + Quoted(named.mName);
  return fmt::format("{} {}{}", kind, named.mNumber, name);
}

}  // namespace

Place Place::InFile(std::uint64_t byte) {
  Place place;
  place.mByte = byte;
  return place;
}

Place Place::InStream(std::string stream, std::optional<std::uint64_t> byte) {
  Place place;
  place.mStream = std::move(stream);
  place.mByte = byte;
  return place;
}

std::string Place::GetText() const {
  std::string text;
  if (!mStream.empty()) Append(text, "stream " + Quoted(mStream));
  if (mBlock) Append(text, fmt::format("block {}", *mBlock));
  if (mByte) {
    const bool inFile = mStream.empty() || mBlock;
    Append(text, fmt::format("byte {}{}", *mByte, inFile ? " of the file" : ""));
  }
  if (mNode) Append(text, NamedText("node", *mNode));
  if (mResult) Append(text, NamedText("result", *mResult));
  if (!mPart.empty()) Append(text, mPart);
  return text;
}

void Findings::Add(Finding finding) {
  ++(finding.mSeverity == Severity::Error ? mNumErrors : mNumWarnings);
  if (++mCounts[finding.mCode] <= mLimit) mKept.push_back(std::move(finding));
}

std::map<std::string, std::uint64_t> Findings::GetOmitted() const {
  std::map<std::string, std::uint64_t> omitted;
  for (const auto& [code, count] : mCounts) {
    if (count > mLimit) omitted[code] = count - mLimit;
  }
  return omitted;
}

std::string Quoted(std::string_view name) {
  constexpr std::size_t kLongest = 80;
  return fmt::format("\"{}\"", Shortened(name, kLongest));
}

void ReportZeroByte(Place place, std::string_view text, std::uint64_t length, Findings& findings) {
  findings.Warning("zero-byte", std::move(place),
                   fmt::format("Readers use {} of a text of {}, because a zero byte follows.",
                               Quoted(text), Plural(length, "byte")));
}

}  // namespace Qov::Tools
