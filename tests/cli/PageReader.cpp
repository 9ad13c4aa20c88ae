#include "PageReader.h"

#include <zlib.h>

#include <bit>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "support/Files.h"

namespace Qov::Test {
namespace {

std::string Inflate(const std::string& base64) {
  const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string compressed;
  std::uint32_t bits = 0;
  int numBits = 0;
  for (const char letter : base64.substr(0, base64.find('='))) {
    bits = bits << 6U | static_cast<std::uint32_t>(digits.find(letter));
    numBits += 6;
    if (numBits < 8) continue;
    numBits -= 8;
    compressed += static_cast<char>(bits >> static_cast<unsigned>(numBits));
  }
  std::string bytes(1U << 24U, '\0');
  uLongf size = bytes.size();
  if (uncompress(reinterpret_cast<Bytef*>(bytes.data()), &size,
                 reinterpret_cast<const Bytef*>(compressed.data()), compressed.size()) != Z_OK) {
    throw std::runtime_error("an array of the page is damaged");
  }
  bytes.resize(size);
  return bytes;
}

std::vector<std::uint32_t> ReadNumbers(const std::string& bytes) {
  std::vector<std::uint32_t> numbers(1);
  unsigned shift = 0;
  for (const char letter : bytes) {
    const auto byte = static_cast<unsigned char>(letter);
    numbers.back() |= (byte & 0x7FU) << shift;
    shift += 7;
    if (byte >= 0x80) continue;
    numbers.push_back(0);
    shift = 0;
  }
  numbers.pop_back();
  return numbers;
}

}  // namespace

PageReader::PageReader(const std::string& path) {
  const std::string page = ReadFile(path);
  const std::string end = "</script>";
  const auto textAfter = [&](std::size_t at) {
    const std::size_t begin = page.find('>', at) + 1;
    return page.substr(begin, page.find(end, begin) - begin);
  };
  mManifest = nlohmann::json::parse(textAfter(page.find("id=\"manifest\"")));
  for (std::size_t i = 0;; ++i) {
    const std::size_t at = page.find("id=\"data-" + std::to_string(i) + "\"");
    if (at == page.npos) break;
    mBuffers[i] = Inflate(textAfter(at));
  }
}

std::vector<double> PageReader::Decode(const nlohmann::json& buffer,
                                       std::size_t numComponents) const {
  const std::string& bytes = mBuffers.at(buffer["data"]);
  const std::string coding = buffer["coding"];
  const std::size_t count = buffer["count"];
  std::vector<double> values;
  const auto plane = [&](std::size_t k, std::size_t i) {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(bytes.at(k * count + i)));
  };
  std::uint32_t previous = 0;
  if (coding == "i32-delta" || coding == "index") {
    for (const std::uint32_t number : ReadNumbers(bytes)) {
      if (coding == "index") {
        values.push_back(previous - number);
        if (number == 0) ++previous;
      } else {
        previous += number % 2 == 0 ? number / 2 : ~(number / 2);
        values.push_back(previous);
      }
    }
  }
  for (std::size_t i = 0; i < count && coding == "f32"; ++i) {
    values.push_back(std::bit_cast<float>(plane(0, i) | plane(1, i) << 8U | plane(2, i) << 16U |
                                          plane(3, i) << 24U));
  }
  for (std::size_t i = 0; i < count && coding.starts_with("u16"); ++i) {
    const std::uint32_t word = plane(0, i) | plane(1, i) << 8U;
    if (coding == "u16" || i % (count / numComponents) == 0) previous = 0;
    previous = (previous + word) % 65536;
    values.push_back(coding == "u16" ? word : previous);
  }
  if (values.size() != count) throw std::runtime_error("an array has the wrong length");
  return values;
}

std::vector<std::vector<double>> PageReader::Points(const nlohmann::json& mesh) const {
  const std::vector<double> codes = Decode(mesh["points"], 3);
  const std::size_t count = codes.size() / 3;
  std::vector<std::vector<double>> points(count);
  for (std::size_t i = 0; i < codes.size(); ++i) {
    const double low = mesh["box"][0][i / count];
    const double high = mesh["box"][1][i / count];
    points[i % count].push_back(low + codes[i] / 65535 * (high - low));
  }
  return points;
}

std::vector<std::vector<double>> PageReader::Values(const nlohmann::json& field) const {
  const std::size_t width = field["ranges"].size();
  const std::vector<double> codes = Decode(field["values"], width);
  std::vector<std::vector<double>> values(width);
  for (std::size_t i = 0; i < codes.size(); ++i) {
    const std::size_t k = i / (codes.size() / width);
    const double low = field["ranges"][k][0];
    const double high = field["ranges"][k][1];
    values[k].push_back(codes[i] == 65535 ? std::numeric_limits<double>::quiet_NaN()
                                          : low + codes[i] / 65534 * (high - low));
  }
  return values;
}

}  // namespace Qov::Test
