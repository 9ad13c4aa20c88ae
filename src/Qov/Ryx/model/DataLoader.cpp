#include "Qov/Ryx/DataLoader.h"

#include <utility>

#include "Qov/Util/Assert.h"
#include "Qov/Util/Raise.h"
#include "container/MallocBuffer.h"
#include "diagnostics/ByteShuffle.h"

namespace QovRyx {
namespace {

constexpr const char* kSource = "include/Qov/Ryx/DataLoader";

/// Memory for the stored bytes of an array. The thread keeps it for its next array if it is small.
class ReadBuffer {
 public:
  explicit ReadBuffer(std::size_t size);
  ~ReadBuffer() {
    if (mMemory.mSize <= kMostKept) sKept = std::move(mMemory);
  }
  ReadBuffer(const ReadBuffer&) = delete;
  ReadBuffer& operator=(const ReadBuffer&) = delete;

  unsigned char* Get() const { return mMemory.mBytes.get(); }

 private:
  static constexpr std::size_t kMostKept = std::size_t{8} << 20;
  struct Memory {
    QovJbf::MallocBuffer mBytes;
    std::size_t mSize = 0;
  };
  static thread_local Memory sKept;

  Memory mMemory;
};

thread_local ReadBuffer::Memory ReadBuffer::sKept;

ReadBuffer::ReadBuffer(std::size_t size) : mMemory(std::exchange(sKept, {})) {
  if (mMemory.mSize >= size) return;
  mMemory.mBytes.reset();  // before the new one is allocated
  mMemory = {QovJbf::AllocateBuffer(kSource, size), size};
}

}  // namespace

DataLoader::DataLoader(std::shared_ptr<QovJbf::StreamReader> reader, std::uint64_t offset,
                       std::uint64_t count, std::uint8_t shuffledWidth)
    : mpReader(std::move(reader)), mOffset(offset), mCount(count), mShuffledWidth(shuffledWidth) {
  const std::uint64_t length = mpReader->GetLength();
  if (mCount != 0 && (mOffset > length || mCount > (length - mOffset) / kElementSize)) {
    Qov::Util::RaiseNotEnoughBytes(kSource);
  }
}

template <class T>
void DataLoader::Load(std::vector<T>& values, bool verified) const {
  static_assert(sizeof(T) == kElementSize);
  values.resize(mCount);
  if (mCount == 0) return;
  const std::size_t size = mCount * kElementSize;
  const auto read = [&](void* target) {
    Qov::Util::WithFileContext(mpReader->GetPath(), [&] {
      verified ? mpReader->ReadVerified(mOffset, target, size)
               : mpReader->Read(mOffset, target, size);
    });
  };
  if (mShuffledWidth == 0) return read(values.data());
  const ReadBuffer stored(size);
  read(stored.Get());
  QovUtil::UnShuffleMultiVectorBytes(stored.Get(), mShuffledWidth, values);
}

void DataLoader::VerifyPlace() const {
  if (mCount == 0) return;
  Qov::Util::WithFileContext(mpReader->GetPath(), [&] { mpReader->VerifyBefore(mOffset); });
}

void DataLoader::ReadStored(std::uint64_t begin, void* target, std::size_t n) const {
  QOV_ASSERT(begin + n <= mCount * kElementSize);
  Qov::Util::WithFileContext(mpReader->GetPath(),
                             [&] { mpReader->Read(mOffset + begin, target, n); });
}

template void DataLoader::Load(std::vector<std::uint32_t>&, bool) const;
template void DataLoader::Load(std::vector<float>&, bool) const;

}  // namespace QovRyx
