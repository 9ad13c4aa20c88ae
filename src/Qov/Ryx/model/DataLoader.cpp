#include "Qov/Ryx/DataLoader.h"

#include <utility>

#include "Qov/Util/Assert.h"
#include "Qov/Util/Raise.h"
#include "diagnostics/ByteShuffle.h"

namespace QovRyx {
namespace {

constexpr const char* kSource = "include/Qov/Ryx/DataLoader";

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
  Qov::Util::WithFileContext(mpReader->GetPath(), [&] {
    verified ? mpReader->ReadVerified(mOffset, values.data(), size)
             : mpReader->Read(mOffset, values.data(), size);
  });
  QovUtil::UnShuffleMultiVectorBytes(values, mShuffledWidth);
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
