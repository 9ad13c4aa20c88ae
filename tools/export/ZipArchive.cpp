#include "export/ZipArchive.h"

#include <zlib.h>

#include <limits>
#include <string_view>

#include "Qov/Util/Raise.h"

namespace Qov::Tools {
namespace {

constexpr std::uint16_t kVersion = 45;        // ZIP64
constexpr std::uint16_t kUtf8Names = 0x0800;  // general purpose flag
constexpr std::uint16_t kDate = 0x0021;       // 1 January 1980, so that outputs are reproducible
constexpr std::uint32_t kInExtraField = 0xFFFFFFFF;
constexpr std::uint16_t kZip64 = 1;  // id of the extra field

/// Little-endian fields, one after another.
class Fields {
 public:
  template <class T>
  Fields& Add(T value) {
    for (std::size_t i = 0; i < sizeof(T); ++i) {
      mBytes += static_cast<char>(static_cast<std::uint64_t>(value) >> (8 * i) & 0xFFU);
    }
    return *this;
  }
  Fields& Add(const std::string& text) {
    mBytes += text;
    return *this;
  }
  const std::string& GetBytes() const { return mBytes; }

 private:
  std::string mBytes;
};

constexpr std::uint16_t kWordSize = 8;

}  // namespace

// Local header:
//   signature: u32, version: u16, flags: u16, method: u16 (0, stored), time: u16, date: u16
//   checksum: u32 (CRC-32), compressed size: u32, size: u32 (both in the extra field)
//   length of the name: u16, length of the extra field: u16, name
//   extra field: id: u16, length: u16, size: u64, compressed size: u64
void ZipArchive::Begin(const std::string& name) {
  if (name.size() > std::numeric_limits<std::uint16_t>::max()) {
    Util::Raise("tools/export/ZipArchive", Util::Exception::ErrorType::OutOfBounds,
                "a name of more than 65535 bytes does not fit into a ZIP archive");
  }
  mEntries.push_back({name, mOutput.GetPosition(), 0, 0});
  Fields header;
  header.Add(std::uint32_t{0x04034B50}).Add(kVersion).Add(kUtf8Names).Add(std::uint16_t{0});
  header.Add(std::uint16_t{0}).Add(kDate).Add(std::uint32_t{0});
  header.Add(kInExtraField).Add(kInExtraField).Add(static_cast<std::uint16_t>(name.size()));
  header.Add(std::uint16_t{4 + 2 * kWordSize}).Add(name);
  header.Add(kZip64).Add(std::uint16_t{2 * kWordSize}).Add(std::uint64_t{0}).Add(std::uint64_t{0});
  mOutput.Write(header.GetBytes());
}

void ZipArchive::Append(const void* data, std::size_t size) {
  if (size == 0) return;  // with a null pointer crc32_z would start again
  Entry& entry = mEntries.back();
  entry.mChecksum = static_cast<std::uint32_t>(
      crc32_z(entry.mChecksum, static_cast<const unsigned char*>(data), size));
  entry.mSize += size;
  mOutput.Write(data, size);
}

void ZipArchive::End() {
  constexpr std::uint64_t kChecksumOffset = 14;
  constexpr std::uint64_t kSizesOffset = 34;  // after the name
  const Entry& entry = mEntries.back();
  mOutput.Patch(entry.mPosition + kChecksumOffset, Fields().Add(entry.mChecksum).GetBytes());
  mOutput.Patch(entry.mPosition + kSizesOffset + entry.mName.size(),
                Fields().Add(entry.mSize).Add(entry.mSize).GetBytes());
}

void ZipArchive::Close() {
  const std::uint64_t begin = mOutput.GetPosition();
  for (const Entry& entry : mEntries) {
    Fields header;
    header.Add(std::uint32_t{0x02014B50}).Add(kVersion).Add(kVersion).Add(kUtf8Names);
    header.Add(std::uint16_t{0}).Add(std::uint16_t{0}).Add(kDate).Add(entry.mChecksum);
    header.Add(kInExtraField).Add(kInExtraField);
    header.Add(static_cast<std::uint16_t>(entry.mName.size()));
    header.Add(std::uint16_t{4 + 3 * kWordSize});
    header.Add(std::uint16_t{0}).Add(std::uint16_t{0}).Add(std::uint16_t{0}).Add(std::uint32_t{0});
    header.Add(kInExtraField).Add(entry.mName);
    header.Add(kZip64).Add(std::uint16_t{3 * kWordSize});
    header.Add(entry.mSize).Add(entry.mSize).Add(entry.mPosition);
    mOutput.Write(header.GetBytes());
  }
  const std::uint64_t end = mOutput.GetPosition();
  const std::uint64_t count = mEntries.size();
  Fields tail;
  tail.Add(std::uint32_t{0x06064B50}).Add(std::uint64_t{44}).Add(kVersion).Add(kVersion);
  tail.Add(std::uint32_t{0}).Add(std::uint32_t{0}).Add(count).Add(count);
  tail.Add(end - begin).Add(begin);
  tail.Add(std::uint32_t{0x07064B50}).Add(std::uint32_t{0}).Add(end).Add(std::uint32_t{1});
  tail.Add(std::uint32_t{0x06054B50}).Add(std::uint32_t{0});
  tail.Add(std::uint16_t{0xFFFF}).Add(std::uint16_t{0xFFFF});
  tail.Add(kInExtraField).Add(kInExtraField).Add(std::uint16_t{0});
  mOutput.Write(tail.GetBytes());
}

}  // namespace Qov::Tools
