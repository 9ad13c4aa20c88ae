#include <algorithm>
#include <cstring>

#include "BlockOutput.h"
#include "ContainerFormat.h"
#include "FileAccess.h"
#include "MallocBuffer.h"
#include "Qov/Jbf/Index.h"
#include "Qov/Util/Assert.h"
#include "Qov/Util/Raise.h"
#include "Sources.h"
#include "ThreadCount.h"

// How the blocks of a stream are compressed while they fill. Of such a block the index knows only
// the length so far; its content goes chunk by chunk to a worker, and what the worker makes of it
// to the file.
namespace QovJbf {

using Qov::Util::Raise;
using Qov::Util::RaiseOutOfMemory;
using ErrorType = Qov::Util::Exception::ErrorType;

void Index::StreamToFile(const std::string& name, std::FILE* file, std::uint64_t expectedLength) {
  MakeLimiter(name).mStreamed = true;
  mpFile = file;
  mExpectedLength = expectedLength;
}

void Index::StopWriting() {
  mpOutput.reset();
  mpFile = nullptr;
}

BlockOutput& Index::GetOutput() {
  if (!mpOutput) {
    std::uint32_t blockSize = 0;
    for (const auto& [name, stream] : mLimiters) blockSize = std::max(blockSize, stream.mLimit);
    mNumThreads = std::min(GetThreadCount(blockSize), mMostThreads);
    mpOutput = std::make_unique<BlockOutput>(mNumThreads, blockSize, mExpectedLength);
  }
  return *mpOutput;
}

// One value was encoded into the block itself, because its length was not known before.
void Index::StreamEncoded(std::uint64_t k) {
  const Block encoded = std::move(mBlocks[k]);
  StreamBytes(FindRoom(k, encoded.GetSize()), encoded.GetData(), encoded.GetSize());
}

void Index::StreamBytes(std::uint64_t k, const void* bytes, std::uint64_t n) {
  const auto* next = static_cast<const unsigned char*>(bytes);
  Stream(k, n, [&next](void* target, std::size_t part) {
    std::memcpy(target, next, part);
    next += part;
  });
}

void Index::Stream(std::uint64_t k, std::uint64_t n, const PieceSource& source) {
  QOV_ASSERT(mpFile != nullptr);
  const std::uint64_t size = mItems[k].mRawSize + n;
  if (size > kLargestBlock) {
    RaiseOutOfMemory(kIndexSource);
  }
  const std::uint32_t limit = GetBlockSizeLimiter(mItems[k].mName).mLimit;
  if (size > limit) GetOutput().AllowExcess(size - limit);
  while (n > 0) {
    const std::span<unsigned char> space = WaitForSpace(k);
    const std::size_t part = std::min<std::uint64_t>(n, space.size());
    source(space.data(), part);
    mItems[k].mRawSize += static_cast<std::uint32_t>(part);
    n -= part;
    if (GetOutput().Advance(k, part)) WriteWhatIsReady(mpFile);
  }
}

// Where the next bytes of block `k` go; meanwhile writes what there is to write.
std::span<unsigned char> Index::WaitForSpace(std::uint64_t k) {
  while (true) {
    const std::span<unsigned char> space = GetOutput().GetSpace(k);
    if (!space.empty()) return space;
    GetOutput().Wait();
    WriteWhatIsReady(mpFile);
  }
}

void Index::PutStoredBlock(const std::string& name, std::uint32_t rawLength,
                           std::uint32_t storedSize, bool isCompressed, const PieceSource& source,
                           std::FILE* file) {
  constexpr std::size_t kPieceSize = std::size_t{1024} * 1024;
  WriteAllHandedOver(file);
  const std::uint64_t k = AddBlock(name);
  if (!IsWrittenUpTo(k)) Raise(kIndexSource, ErrorType::NotImplemented);
  IndexItem& item = mItems[k];
  item.mFlags |= BlockFlag::kFreezeWhenFull;
  if (isCompressed) item.mFlags |= BlockFlag::kCompressed;
  item.mFrozen = true;
  item.mRawSize = rawLength;
  SetSize(k, storedSize);
  const MallocBuffer piece = AllocateBuffer(kIndexSource, kPieceSize);
  for (std::uint64_t done = 0; done < storedSize;) {
    const std::size_t n = std::min<std::uint64_t>(kPieceSize, storedSize - done);
    source(piece.get(), n);
    WriteAt(kIndexSource, file, GetPosition(k) + done, piece.get(), n);
    done += n;
  }
}

}  // namespace QovJbf
