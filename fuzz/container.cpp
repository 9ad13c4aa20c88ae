#include <algorithm>
#include <set>
#include <vector>

#include "InputLayout.h"
#include "MemoryFile.h"
#include "Qov/Jbf/JbFile.h"
#include "Target.h"

/// Opens a container and reads every stream to its end, both ways there are.
namespace {

using namespace Qov::Fuzz;

constexpr std::size_t kPiece = 100'000;

void ReadThrough(QovJbf::JbFile& file, const std::string& name) {
  const auto reader = file.OpenStreamReader(name);
  std::vector<std::uint8_t> fromReader(kPiece);
  std::vector<std::uint8_t> fromBlocks(kPiece);
  file.SetBlockPosition(name, 0);
  for (std::uint64_t at = 0; at < reader->GetLength(); at += kPiece) {
    const std::size_t n = std::min<std::uint64_t>(kPiece, reader->GetLength() - at);
    const bool isSound = Accepts([&] { reader->Read(at, fromReader.data(), n); });
    const bool isRead =
        Accepts([&] { file.RequireBytes(name, fromBlocks.data(), static_cast<std::uint32_t>(n)); });
    if (!isSound || !isRead) return;
    Require(std::equal(fromReader.begin(), fromReader.begin() + static_cast<std::ptrdiff_t>(n),
                       fromBlocks.begin()),
            "both ways of reading give the same bytes");
  }
  reader->Verify();
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
    Accepts([&] { ReadThrough(file, name); });
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
