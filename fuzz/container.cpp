#include <algorithm>
#include <set>
#include <vector>

#include "InputLayout.h"
#include "MemoryFile.h"
#include "Qov/Jbf/JbFile.h"
#include "Target.h"
#include "container/ReadAhead.h"

/// Opens a container and reads every stream to its end, through a StreamReader and through the
/// blocks.
namespace {

using namespace Qov::Fuzz;

constexpr std::size_t kPiece = 100'000;
constexpr std::uint64_t kLongest = 10'000'000;  ///< Bytes of streams that are read as a whole.

std::size_t CountBlocks(QovJbf::JbFile& file, const std::string& name) {
  const auto& items = file.GetIndex().GetItems();
  return static_cast<std::size_t>(std::count_if(
      items.begin(), items.end(),
      [&name](const QovJbf::IndexItem& item) { return item.mName == name && item.mSize > 0; }));
}

/// Reads pieces that end at the end of a block at most, because reading through the blocks refuses
/// others. That way decompresses a whole block at once, empty blocks included; the reader skips
/// these.
void ReadThrough(QovJbf::JbFile& file, const std::string& name) {
  const auto reader = file.OpenStreamReader(name);
  std::vector<std::uint8_t> fromReader(kPiece);
  std::vector<std::uint8_t> fromBlocks(kPiece);
  std::size_t numBlocks = 0;
  bool areBlocksSound = Accepts([&] { file.SetBlockPosition(name, 0); });
  for (std::uint64_t at = 0; at < reader->GetLength();) {
    const auto block = reader->FindBlock(at, 1);
    Require(block.has_value(), "each byte is in a block");
    if (block->mStart == at) ++numBlocks;
    const std::size_t n = std::min<std::uint64_t>(kPiece, block->mStart + block->mRawLength - at);
    reader->Read(at, fromReader.data(), n);
    areBlocksSound = areBlocksSound && Accepts([&] {
                       file.RequireBytes(name, fromBlocks.data(), static_cast<std::uint32_t>(n));
                     });
    Require(!areBlocksSound ||
                std::equal(fromReader.begin(), fromReader.begin() + static_cast<std::ptrdiff_t>(n),
                           fromBlocks.begin()),
            "both ways of reading give the same bytes");
    at += n;
  }
  reader->Verify();
  const bool hasEmptyBlocks = numBlocks < CountBlocks(file, name);
  Require(areBlocksSound || hasEmptyBlocks, "both ways of reading accept the same blocks");
}

/// Reads a stream piece by piece with zlib, and then with blocks that are decompressed ahead as a
/// whole. The second way must accept what the first one accepts. It may accept more: see
/// WholeBlock.h.
void ReadAheadThrough(QovJbf::JbFile& file, const std::string& name) {
  const auto reader = file.OpenStreamReader(name);
  const std::uint64_t length = reader->GetLength();
  if (length == 0 || length > kLongest) return;
  std::vector<std::uint8_t> pieces(length);
  reader->Read(0, pieces.data(), length);
  reader->Verify();
  const auto wholeReader = file.OpenStreamReader(name);
  const QovJbf::ReadAhead ahead({{wholeReader.get(), 0, length}});
  std::vector<std::uint8_t> whole(length);
  Require(Accepts([&] { wholeReader->ReadVerified(0, whole.data(), length); }),
          "a block that zlib accepts can be decompressed ahead");
  Require(pieces == whole, "blocks that are decompressed ahead have the same bytes");
}

void ReadContainer(const std::string& path) {
  QovJbf::JbFile file;
  file.OpenFile(path, "rb");
  static_cast<void>(file.IsJbFile());
  bool isCurrent = false;
  QovJbf::JbFile::CheckSupport(file.ReadVersion(), isCurrent);
  file.ReadIndex();
  std::set<std::string> names;
  for (const QovJbf::IndexItem& item : file.GetIndex().GetItems()) names.insert(item.mName);
  for (const std::string& name : names) {
    // These are parts of the index. They are not streams with positions.
    if (name.starts_with("\vIndex Block ") || name.starts_with("\vEmpty Block ")) continue;
    Accepts([&] { ReadThrough(file, name); });
    Accepts([&] { ReadAheadThrough(file, name); });
  }
}

}  // namespace

const InputLayout Qov::Fuzz::kInputLayout{};

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static MemoryFile file;
  file.SetContent(data, size);
  Accepts([] { ReadContainer(file.GetPath()); });
  return 0;
}
