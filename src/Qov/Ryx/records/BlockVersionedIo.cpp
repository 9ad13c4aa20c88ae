#include "Qov/Ryx/BlockVersionedIo.h"

#include <cstring>
#include <limits>
#include <utility>

#include "Qov/Jbf/JbFile.h"
#include "Qov/Util/Assert.h"
#include "Qov/Util/Raise.h"
#include "container/ContainerFormat.h"

namespace QovJbf {

namespace {

using Qov::Util::Raise;
using ErrorType = Qov::Util::Exception::ErrorType;

constexpr const char* kSource = "include/Qov/Ryx/BlockVersionedIo";
/// The line number that is reported for a record that is longer than its size.
constexpr unsigned long kOverrunLine = 184;

constexpr int kLastRung = 7;
constexpr int kAboveAllRungs = std::numeric_limits<int>::max();

/// Returns N for a tag "0.N", or 0 for any other text.
int ParseRung(std::string_view tag) {
  const bool isRung = tag.size() == 3 && tag.substr(0, 2) == "0." && tag[2] >= '1' && tag[2] <= '9';
  return isRung ? tag[2] - '0' : 0;
}

std::string ReadTag(Block& block) {
  std::uint32_t length = 0;
  CopyFromBlock(block, length);
  if (length > block.GetRemaining()) Qov::Util::RaiseNotEnoughBytes(kSource);
  std::string tag(length, '\0');
  block.Get(tag.data(), length);
  return tag;
}

/// Reads the size of a record and returns its end.
std::uint32_t ReadEnd(Block& block) {
  const std::uint32_t start = block.GetPosition();
  std::uint32_t size = 0;
  CopyFromBlock(block, size);
  if (size > block.GetSize() - start) Qov::Util::RaiseNotEnoughBytes(kSource);
  return start + size;
}

}  // namespace

RungLadder::RungLadder(std::string_view tag) : mHeight(ParseRung(tag.substr(0, tag.find('\0')))) {
  if (mHeight == 0 || mHeight > kLastRung) mHeight = kAboveAllRungs;
}

bool RungLadder::Reaches(std::string_view rung) const {
  const int height = ParseRung(rung);
  QOV_ASSERT(height != 0);
  return height <= mHeight;
}

FrameWriter::FrameWriter(Block& block, std::string_view tag)
    : mBlock(block), mStart(block.GetPosition()) {
  CopyToBlock(mBlock, std::uint32_t{0});
  CopyToBlock(mBlock, std::string(tag));
}

void FrameWriter::Close() {
  const std::uint32_t end = mBlock.GetPosition();
  mBlock.SetPosition(mStart);
  CopyToBlock(mBlock, end - mStart);
  mBlock.SetPosition(end);
}

FrameReader::FrameReader(Block& block)
    : mBlock(block),
      mHasSize(HasRecordSizes(ryx_file_version)),
      mEnd(mHasSize ? ReadEnd(block) : block.GetSize()),
      mTag(ReadTag(block)) {}

std::string_view FrameReader::Close() {
  if (!mHasSize) return {};
  const std::uint32_t position = mBlock.GetPosition();
  if (position > mEnd) Raise(kSource, ErrorType::UnknownVersion, kOverrunLine);
  mBlock.SetPosition(mEnd);
  return Detail::GetBytesFrom(mBlock, position);
}

bool Detail::HaveSameBytes(const Block& left, const Block& right) {
  return left.GetSize() == right.GetSize() &&
         (left.GetSize() == 0 || std::memcmp(left.GetData(), right.GetData(), left.GetSize()) == 0);
}

void CopyToBlock_Opaque(Block& block, const QovRyx::OpaqueRecord& record) {
  FrameWriter frame(block, record.mTag);
  block.Put(record.mBody.data(), static_cast<std::uint32_t>(record.mBody.size()));
  frame.Close();
}

void CopyFromBlock_Opaque(Block& block, QovRyx::OpaqueRecord& record, const char* name) {
  if (!HasRecordSizes(ryx_file_version)) {
    const std::string where = " in a file of version " + ryx_file_version;
    Raise(kSource, ErrorType::FormatNotSupported, "Format Not Supported: " + (name + where));
  }
  FrameReader frame(block);
  const std::uint32_t start = block.GetPosition();
  const std::uint32_t size = frame.GetEnd() > start ? frame.GetEnd() - start : 0;
  std::vector<std::uint8_t> body(size);
  block.Get(body.data(), size);
  frame.Close();
  record.mTag = frame.GetTag();
  record.mBody = std::move(body);
}

}  // namespace QovJbf
