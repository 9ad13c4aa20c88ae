#include <array>
#include <cstring>
#include <iterator>
#include <utility>

#include "Qov/Ryx/BlockVersionedIo.h"
#include "Qov/Ryx/FileVersionScope.h"
#include "Target.h"
#include "support/RecordTypes.h"

/// Reads one record: type: u8 | version of the file: u8 | bytes. Whatever is accepted is written
/// and read again without a change.
namespace {

using namespace Qov::Fuzz;

constexpr std::array kVersions = {"0.1", "0.1a", "0.1b", "0.2", "0.3", "0.4", "0.5",
                                  "0.6", "0.7",  "1.0",  "1.1", "1.2", "1.3"};

QovJbf::Block MakeBlock(const std::uint8_t* bytes, std::size_t size) {
  QovJbf::Block block;
  block.AllocateAdditionalMemory(size + 1);
  block.Put(bytes, static_cast<std::uint32_t>(size));
  block.SetPosition(0);
  return block;
}

bool HaveSameBytes(const QovJbf::Block& a, const QovJbf::Block& b) {
  return a.GetSize() == b.GetSize() &&
         (a.GetSize() == 0 || std::memcmp(a.GetData(), b.GetData(), a.GetSize()) == 0);
}

template <class Record>
void ReadRecord(const char* version, const std::uint8_t* bytes, std::size_t size) {
  Record record;
  const bool isSound = Accepts([&] {
    QovJbf::Block input = MakeBlock(bytes, size);
    const QovRyx::FileVersionScope scope(version);
    CopyFromBlock(input, record);
  });
  if (!isSound) return;
  QovJbf::Block written;
  QovJbf::Block writtenAgain;
  const bool isKept = Accepts([&] {
    CopyToBlock(written, record);
    written.SetPosition(0);
    Record again;
    CopyFromBlock(written, again);
    CopyToBlock(writtenAgain, again);
  });
  Require(isKept, "a record that was accepted can be written and read");
  Require(HaveSameBytes(written, writtenAgain), "a record is written and read without a change");
}

using Reader = void (*)(const char*, const std::uint8_t*, std::size_t);

template <class... Records>
struct Readers {
  static constexpr std::array<Reader, sizeof...(Records)> kAll = {&ReadRecord<Records>...};
};
constexpr const auto& kReaders = Qov::Test::EveryRecordIn<Readers>::kAll;

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const Reader reader = kReaders[data[0] % kReaders.size()];
  const char* version = kVersions[data[1] % kVersions.size()];
  reader(version, data + 2, size - 2);
  return 0;
}
