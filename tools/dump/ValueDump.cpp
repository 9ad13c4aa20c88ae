#include "dump/ValueDump.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <iterator>
#include <nlohmann/json.hpp>

namespace Qov::Tools {
namespace {

/// Buffers text and writes it in pieces.
class TextBuffer {
 public:
  explicit TextBuffer(Output& output) : mOutput(output) {}

  void Append(std::string_view text) { mBuffer.append(text); }
  template <class T>
  void AppendNumber(T number) {
    fmt::format_to(std::back_inserter(mBuffer), "{}", number);
  }
  void WriteIfFull() {
    constexpr std::size_t kPiece = 1U << 16U;
    if (mBuffer.size() >= kPiece) Write();
  }
  void Write() {
    mOutput.Write({mBuffer.data(), mBuffer.size()});
    mBuffer.clear();
  }

 private:
  Output& mOutput;
  fmt::memory_buffer mBuffer;
};

void AppendElement(const Values& values, std::size_t i, TextBuffer& text) {
  const std::uint32_t bits = values.mBits[i];
  if (values.mIntegers) {
    text.AppendNumber(bits);
  } else {
    text.AppendNumber(std::bit_cast<float>(bits));
  }
}

void AppendJsonElement(const Values& values, std::size_t i, TextBuffer& text) {
  const auto number = std::bit_cast<float>(values.mBits[i]);
  const bool isNegativeZero = number == 0 && std::signbit(number);  // readers convert -0 to 0
  const bool isPlain = std::isfinite(number) && !isNegativeZero;
  if (values.mIntegers || isPlain) return AppendElement(values, i, text);
  text.Append(JsonFloat(number).dump());
}

/// Appends `count` elements from `begin` on as an array.
void AppendJsonArray(const Values& values, std::size_t begin, std::size_t count, TextBuffer& text) {
  text.Append("[");
  for (std::size_t i = 0; i < count; ++i) {
    if (i != 0) text.Append(", ");
    AppendJsonElement(values, begin + i, text);
  }
  text.Append("]");
}

std::string NpyHeader(const Values& values) {
  constexpr std::size_t kAlignment = 64;
  constexpr std::size_t kPrefix = 10;  // magic: 6 bytes, version: 2, u16 length of the header
  const std::string shape = values.GetNumRest() == 0
                                ? fmt::format("({}, {})", values.GetNumItems(), values.mWidth)
                                : fmt::format("({},)", values.mBits.size());
  std::string header = fmt::format("{{'descr': '{}', 'fortran_order': False, 'shape': {}, }}",
                                   values.mIntegers ? "<u4" : "<f4", shape);
  const std::size_t length = (kPrefix + header.size()) / kAlignment * kAlignment + kAlignment;
  header.resize(length - kPrefix - 1, ' ');
  return header + '\n';
}

}  // namespace

void WriteLines(const Values& values, char separator, Output& output) {
  TextBuffer text(output);
  for (std::size_t i = 0; i < values.mBits.size(); ++i) {
    AppendElement(values, i, text);
    const bool isLast = (i + 1) % values.mWidth == 0 || i + 1 == values.mBits.size();
    const char after = isLast ? '\n' : separator;
    text.Append({&after, 1});
    text.WriteIfFull();
  }
  text.Write();
}

void WriteCsv(const Values& values, Output& output) {
  std::string heading = "value";
  for (std::size_t i = 1; i < values.mWidth; ++i) {
    heading = i == 1 ? "value1,value2" : heading + fmt::format(",value{}", i + 1);
  }
  output.Line(heading);
  WriteLines(values, ',', output);
}

void WriteJson(const Json& document, const Values& values, Output& output) {
  constexpr std::string_view kEnd = "\n}";
  std::string opening = FormatJson(document);
  opening.erase(opening.size() - kEnd.size());
  TextBuffer text(output);
  text.Append(opening + ",\n  \"values\": [");
  for (std::size_t i = 0; i < values.GetNumItems(); ++i) {
    text.Append(i == 0 ? "\n    " : ",\n    ");
    if (values.mWidth == 1) {
      AppendJsonElement(values, i, text);
    } else {
      AppendJsonArray(values, i * values.mWidth, values.mWidth, text);
    }
    text.WriteIfFull();
  }
  text.Append("\n  ]");
  if (const std::size_t rest = values.GetNumRest(); rest != 0) {
    text.Append(",\n  \"rest\": ");
    AppendJsonArray(values, values.mBits.size() - rest, rest, text);
  }
  text.Append("\n}\n");
  text.Write();
}

void WriteNpy(const Values& values, Output& output) {
  const std::string header = NpyHeader(values);
  const auto length = static_cast<std::uint16_t>(header.size());
  std::string prefix = "\x93NUMPY";
  for (const int byte : {1, 0, length & 0xFF, length >> 8}) prefix += static_cast<char>(byte);
  output.Write(prefix + header);
  // Elements have the same layout in memory and in the file.
  output.Write({reinterpret_cast<const char*>(values.mBits.data()),
                values.mBits.size() * sizeof(std::uint32_t)});
}

}  // namespace Qov::Tools
