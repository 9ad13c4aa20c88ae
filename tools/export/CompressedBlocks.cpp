#include "export/CompressedBlocks.h"

#include <zlib.h>

#include <algorithm>

#include "Qov/Util/Raise.h"
#include "container/ThreadCount.h"

namespace Qov::Tools {
namespace {

constexpr std::size_t kBlockSize = std::size_t{1} << 18U;
constexpr int kLevel = 5;

std::string BytesOf(const std::vector<std::uint64_t>& words) {
  return {reinterpret_cast<const char*>(words.data()), words.size() * sizeof(words[0])};
}

bool Compress(const std::vector<unsigned char>& input, std::vector<unsigned char>& output) {
  uLongf size = compressBound(input.size());
  output.resize(size);
  if (compress2(output.data(), &size, input.data(), input.size(), kLevel) != Z_OK) return false;
  output.resize(size);
  return true;
}

}  // namespace

CompressedBlocks::CompressedBlocks(SafeOutput& output)
    : mOutput(output),
      mMostJobs(2 * std::size_t{QovJbf::GetThreadCount(kBlockSize)}),
      mWorkers(QovJbf::GetThreadCount(kBlockSize)) {}

CompressedBlocks::~CompressedBlocks() = default;

void CompressedBlocks::Begin(std::uint64_t size) {
  mSize = size;
  mHeaderPosition = mOutput.GetPosition();
  mCompressedSizes.clear();
  const std::uint64_t numBlocks = (size + kBlockSize - 1) / kBlockSize;
  mOutput.Write(BytesOf(std::vector<std::uint64_t>(3 + numBlocks)));
}

void CompressedBlocks::Append(const void* data, std::size_t size) {
  const auto* bytes = static_cast<const unsigned char*>(data);
  while (size != 0) {
    const std::size_t taken = std::min(size, kBlockSize - mBlock.size());
    mBlock.insert(mBlock.end(), bytes, bytes + taken);
    bytes += taken;
    size -= taken;
    if (mBlock.size() == kBlockSize) PostBlock();
  }
}

void CompressedBlocks::PostBlock() {
  if (mJobs.size() >= mMostJobs) WriteFirst();
  auto job = std::make_shared<Job>();
  job->mInput.swap(mBlock);
  mBlock.reserve(kBlockSize);
  mJobs.push_back(job);
  mWorkers.Post([this, job] {
    bool hasFailed = true;
    try {
      hasFailed = !Compress(job->mInput, job->mOutput);
    } catch (const std::bad_alloc&) {
      hasFailed = true;
    }
    const std::lock_guard lock(mMutex);
    job->mHasFailed = hasFailed;
    job->mIsDone = true;
    mDone.notify_one();
  });
}

void CompressedBlocks::WriteFirst() {
  const std::shared_ptr<Job> job = mJobs.front();
  mJobs.pop_front();
  {
    std::unique_lock lock(mMutex);
    mDone.wait(lock, [&] { return job->mIsDone; });
  }
  if (job->mHasFailed) {
    Util::Raise("tools/export/CompressedBlocks", Util::Exception::ErrorType::MemoryAllocationError,
                "there is not enough memory for compressing an array");
  }
  mOutput.Write(job->mOutput.data(), job->mOutput.size());
  mCompressedSizes.push_back(job->mOutput.size());
}

void CompressedBlocks::End() {
  if (!mBlock.empty()) PostBlock();
  while (!mJobs.empty()) WriteFirst();
  std::vector<std::uint64_t> header = {mCompressedSizes.size(), kBlockSize, mSize % kBlockSize};
  header.insert(header.end(), mCompressedSizes.begin(), mCompressedSizes.end());
  mOutput.Patch(mHeaderPosition, BytesOf(header));
}

}  // namespace Qov::Tools
