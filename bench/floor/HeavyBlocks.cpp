#include "HeavyBlocks.h"

#include <zlib.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>

#include "Qov/Jbf/JbFile.h"
#include "container/ContainerFormat.h"
#include "model/StreamNames.h"

namespace Qov::Bench {
namespace {

constexpr std::size_t kPiece = std::size_t{256} * 1024;

struct StoredBlock {
  std::uint64_t mPosition;
  std::uint32_t mSize;
};

std::vector<StoredBlock> FindHeavyBlocks(const std::string& path) {
  QovJbf::JbFile file;
  file.OpenFile(path, "rb");
  file.ReadIndex();
  std::vector<StoredBlock> blocks;
  QovJbf::Index& index = file.GetIndex();
  for (std::uint64_t k = 0; k < index.GetItems().size(); ++k) {
    const QovJbf::IndexItem& item = index.GetItems()[k];
    if (item.mName != QovRyx::kHeavyData || item.mSize <= QovJbf::kRawLengthSize) continue;
    blocks.push_back({index.GetPosition(k), item.mSize});
  }
  return blocks;
}

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

File Open(const std::string& path) {
  File file(std::fopen(path.c_str(), "rb"), &std::fclose);
  if (!file) throw std::runtime_error("cannot read " + path);
  return file;
}

void ReadAt(std::FILE* file, std::uint64_t position, void* target, std::size_t size) {
  fseeko(file, static_cast<off_t>(position), SEEK_SET);
  if (std::fread(target, 1, size, file) != size) throw std::runtime_error("short read");
}

void InflateBlock(std::FILE* file, const StoredBlock& block, const Receiver& receive) {
  std::vector<unsigned char> in(kPiece);
  std::vector<unsigned char> out(kPiece);
  z_stream stream{};
  inflateInit(&stream);
  fseeko(file, static_cast<off_t>(block.mPosition + QovJbf::kRawLengthSize), SEEK_SET);
  std::size_t left = block.mSize - QovJbf::kRawLengthSize;
  for (int result = Z_OK; result != Z_STREAM_END;) {
    if (stream.avail_in == 0) {
      stream.next_in = in.data();
      stream.avail_in = static_cast<uInt>(std::fread(in.data(), 1, std::min(left, kPiece), file));
      left -= stream.avail_in;
    }
    stream.next_out = out.data();
    stream.avail_out = kPiece;
    result = inflate(&stream, Z_NO_FLUSH);
    if (result != Z_OK && result != Z_STREAM_END) throw std::runtime_error("damaged block");
    receive(out.data(), kPiece - stream.avail_out);
  }
  inflateEnd(&stream);
}

}  // namespace

void InflateHeavyBlocks(const std::string& path, const Receiver& receive) {
  const std::vector<StoredBlock> blocks = FindHeavyBlocks(path);
  const File file = Open(path);
  for (const StoredBlock& block : blocks) InflateBlock(file.get(), block, receive);
}

std::vector<std::uint64_t> ReadBlockLengths(const std::string& path) {
  const std::vector<StoredBlock> blocks = FindHeavyBlocks(path);
  const File file = Open(path);
  std::vector<std::uint64_t> lengths;
  for (const StoredBlock& block : blocks) {
    std::array<unsigned char, QovJbf::kRawLengthSize> field{};
    ReadAt(file.get(), block.mPosition, field.data(), field.size());
    std::uint64_t length = 0;
    for (std::size_t i = 0; i < field.size(); ++i) length |= std::uint64_t{field[i]} << 8 * i;
    lengths.push_back(length);
  }
  return lengths;
}

std::uint64_t DefaultBlockLength() {
  const char* text = std::getenv("TELMORAX_MAX_RYX_BLOCK_SIZE");
  return text == nullptr ? QovJbf::kDefaultBlockLimit : std::strtoull(text, nullptr, 10);
}

}  // namespace Qov::Bench
