#include "container/WholeBlock.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include "ContainerSupport.h"

namespace QovJbf {
namespace {

using namespace Qov::Test;

std::string Compressed(int level, const std::string& content) {
  std::string stream(GetWholeBound(content.size()), '\0');
  stream.resize(CompressWhole(level, content.data(), content.size(), stream.data()));
  return stream;
}

std::string FromHex(const std::string& digits) {
  std::string bytes;
  std::string digit;
  for (const char c : digits) {
    if (c != ' ') digit += c;
    if (digit.size() < 2) continue;
    bytes += static_cast<char>(std::stoi(digit, nullptr, 16));
    digit.clear();
  }
  return bytes;
}

/// Returns the content, or "refused".
std::string Decompressed(const std::string& stream, std::size_t n) {
  std::string content(n, '\0');
  const std::size_t length = DecompressWhole(stream.data(), stream.size(), content.data(), n);
  return length == 0 ? "refused" : content;
}

/// Does the same with zlib alone.
std::string Inflated(const std::string& stream, std::size_t n) {
  std::string content(n + 1, '\0');
  uLongf length = content.size();
  const int result = uncompress(reinterpret_cast<Bytef*>(content.data()), &length,
                                reinterpret_cast<const Bytef*>(stream.data()), stream.size());
  content.resize(n);
  return result == Z_OK && length == n ? content : "refused";
}

TEST(WholeBlockTest, MakesZlibStreams) {
  for (const std::size_t n : {0U, 1U, 300U, 100000U}) {
    const std::string content = SomeBytes(n, 1);
    for (const int level : {1, 6, 9}) {
      const std::string stream = Compressed(level, content);
      EXPECT_EQ(Inflated(stream, n), content) << n << " bytes, level " << level;
      EXPECT_EQ(Decompressed(stream, n), content) << n << " bytes, level " << level;
    }
  }
}

TEST(WholeBlockTest, AcceptsTheStreamsThatZlibAccepts) {
  struct Case {
    const char* mName;
    const char* mStream;  ///< In hexadecimal.
    std::size_t mLength;  ///< The stored length of the content.
    const char* mContent;
  };
  const char* const content = "aaaaaaaaaaaaaaaa";
  const Case cases[] = {
      {"as zlib writes it", "789c4b4c44050033980611", 16, content},
      {"bytes after the end", "789c4b4c44050033980611ffff", 16, content},
      {"stored, not compressed", "7801010300fcff616263024d0127", 3, "abc"},
      {"a window of 256 bytes", "081d 4b4c440500 33980611", 16, content},
      {"a longer content", "789c4b4c44050033980611", 15, "refused"},
      {"a shorter content", "789c4b4c44050033980611", 17, "refused"},
      {"a content where none is expected", "789c4b4c44050033980611", 0, "refused"},
      {"a wrong checksum", "789c4b4c44050033980610", 16, "refused"},
      {"half a checksum", "789c4b4c440500 3398", 16, "refused"},
      {"no checksum", "789c4b4c440500", 16, "refused"},
      {"no end of the last block", "789c4b4c4405", 16, "refused"},
      {"nothing", "", 16, "refused"},
      {"a window that is too large", "8819 4b4c440500 33980611", 16, "refused"},
      {"another method", "791b 4b4c440500 33980611", 16, "refused"},
      {"a wrong header checksum", "789d 4b4c440500 33980611", 16, "refused"},
      {"a preset dictionary", "78bb 00000001 4b4c440500 33980611", 16, "refused"},
      {"a distance before the content", "789c 4b04 1100 33980611", 16, "refused"},
      {"lengths of a stored block that differ", "7801010300fcfe616263024d0127", 3, "refused"},
      {"a block of unknown type", "789c 07 33980611", 16, "refused"},
  };
  for (const Case& c : cases) {
    const std::string stream = FromHex(c.mStream);
    EXPECT_EQ(Decompressed(stream, c.mLength), c.mContent) << c.mName;
    EXPECT_EQ(Inflated(stream, c.mLength), c.mContent) << c.mName;
  }
  std::string found(16, '\0');
  const std::string longer = FromHex("789c4b4c44050033980611ffff");
  EXPECT_EQ(DecompressWhole(longer.data(), longer.size(), found.data(), found.size()), 11U);
}

TEST(WholeBlockTest, RefusesDamageLikeZlib) {
  const std::string content = SomeBytes(3000, 1);
  const std::string sound = Compressed(6, content);
  for (std::size_t n = 0; n < sound.size(); ++n) {
    EXPECT_EQ(Decompressed(sound.substr(0, n), content.size()), "refused") << n;
  }
  std::mt19937 random(2);
  for (int i = 0; i < 3000; ++i) {
    std::string stream = sound;
    stream[random() % stream.size()] ^= static_cast<char>(1U << random() % 8);
    EXPECT_EQ(Decompressed(stream, content.size()), Inflated(stream, content.size())) << i;
  }
}

}  // namespace
}  // namespace QovJbf
