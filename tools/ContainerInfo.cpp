#include "ContainerInfo.h"

#include <sys/stat.h>
#include <unistd.h>

#include <exception>
#include <unordered_map>

#include "ErrorText.h"
#include "Qov/Jbf/JbFile.h"
#include "Qov/Util/Raise.h"
#include "container/ContainerFormat.h"

namespace Qov::Tools {
namespace {

std::uint64_t FileSize(int descriptor) {
  struct stat status {};
  return fstat(descriptor, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

std::optional<std::uint32_t> RawSize(int descriptor, const BlockInfo& block,
                                     std::uint64_t fileSize) {
  if (block.mStored > fileSize || block.mPosition > fileSize - block.mStored) return std::nullopt;
  if ((block.mFlags & QovJbf::BlockFlag::kCompressed) == 0) return block.mStored;
  std::uint32_t raw = 0;
  const bool isRead = block.mStored >= QovJbf::kRawLengthSize &&
                      pread(descriptor, &raw, sizeof raw, static_cast<off_t>(block.mPosition)) ==
                          static_cast<ssize_t>(sizeof raw);
  return isRead ? std::optional(raw) : std::nullopt;
}

void ReadBlocks(QovJbf::JbFile& file, ContainerInfo& info) {
  QovJbf::Index& index = file.GetIndex();
  const int descriptor = fileno(file.GetStream());
  for (std::uint64_t k = 0; k < index.GetItems().size(); ++k) {
    const QovJbf::IndexItem& item = index.GetItems()[k];
    if (item.mName == QovJbf::kEmptyBlockName) continue;
    BlockInfo block{k, item.mName, index.GetPosition(k), item.mSize, {}, item.mFlags};
    block.mRaw = RawSize(descriptor, block, info.mFileSize);
    info.mBlocks.push_back(std::move(block));
  }
}

void MeasureStream(QovJbf::JbFile& file, StreamInfo& stream) {
  try {
    stream.mRaw = file.OpenStreamReader(stream.mName)->GetLength();
  } catch (const std::exception& error) {
    stream.mTrouble = ErrorText(error);
  }
}

void ReadStreams(QovJbf::JbFile& file, ContainerInfo& info) {
  std::unordered_map<std::string, std::size_t> positions;
  for (const BlockInfo& block : info.mBlocks) {
    if (block.IsIndex()) continue;
    const auto [found, isNew] = positions.emplace(block.mStream, info.mStreams.size());
    if (isNew) info.mStreams.push_back({block.mStream, 0, 0, 0, ""});
    StreamInfo& stream = info.mStreams[found->second];
    ++stream.mNumBlocks;
    stream.mStored += block.mStored;
  }
  for (StreamInfo& stream : info.mStreams) MeasureStream(file, stream);
}

void Read(const std::string& path, ContainerInfo& info) {
  QovJbf::JbFile file;
  file.OpenFile(path, "rb");
  info.mFileSize = FileSize(fileno(file.GetStream()));
  if (!file.IsJbFile()) {
    Util::Raise("tools/ContainerInfo", Util::Exception::ErrorType::FormatNotSupported,
                "is not a Ryx file");
  }
  info.mVersion = file.ReadVersion();
  file.ReadIndex();
  ReadBlocks(file, info);
  ReadStreams(file, info);
}

}  // namespace

std::uint64_t ContainerInfo::GetRawSize() const {
  std::uint64_t size = 0;
  for (const StreamInfo& stream : mStreams) size += stream.mTrouble.empty() ? stream.mRaw : 0;
  return size;
}

ContainerInfo ReadContainer(const std::string& path) {
  ContainerInfo info;
  try {
    Read(path, info);
  } catch (const std::exception& error) {
    info.mTrouble = ErrorText(error);
  }
  return info;
}

}  // namespace Qov::Tools
