#include "export/CompressedBlocks.h"

#include <fmt/format.h>
#include <zlib.h>

#include <algorithm>

#include "Qov/Util/Raise.h"
#include "container/ThreadCount.h"

namespace Qov::Tools {
namespace {

using ErrorType = Util::Exception::ErrorType;

constexpr const char* kSource = "tools/export/CompressedBlocks";
constexpr std::size_t kBlockSize = std::size_t{1} << 16U;  // each growing array has one in memory
constexpr int kLevel = 5;                                  // VTK's default

// Room for the greatest 64-bit number and the quote after it. The padding follows the quote because
// some readers compare the text of the attribute.
constexpr std::size_t kOffsetWidth = 21;

std::string BytesOf(const std::vector<std::uint64_t>& words) {
  return {reinterpret_cast<const char*>(words.data()), words.size() * sizeof(words[0])};
}

std::uint64_t CountBlocks(std::uint64_t size) { return (size + kBlockSize - 1) / kBlockSize; }

bool Compress(const std::vector<unsigned char>& input, std::vector<unsigned char>& output) {
  uLongf size = compressBound(input.size());
  output.resize(size);
  if (compress2(output.data(), &size, input.data(), input.size(), kLevel) != Z_OK) return false;
  output.resize(size);
  return true;
}

}  // namespace

/// An array whose blocks are being compressed or written.
class CompressedBlocks::Array {
 public:
  std::uint64_t mSize = 0;
  std::uint64_t mAppended = 0;
  std::uint64_t mOffsetPosition = 0;
  std::uint64_t mHeaderPosition = 0;
  std::vector<unsigned char> mBlock;  ///< The one that is being filled.
  std::vector<std::uint64_t> mCompressedSizes;
  std::vector<std::uint64_t> mSpilledPositions;  ///< Of the blocks, if they are spilled.

  /// Returns the bytes before the blocks. Lengths that are not known yet are 0.
  std::string GetHeader() const {
    std::vector<std::uint64_t> words = {CountBlocks(mSize), kBlockSize, mSize % kBlockSize};
    words.insert(words.end(), mCompressedSizes.begin(), mCompressedSizes.end());
    words.resize(3 + CountBlocks(mSize));
    return BytesOf(words);
  }
};

/// The header of an array, or a block, or the end of an array, in the order of the file.
struct CompressedBlocks::Job {
  enum class Kind { Header, Block, End } mKind = Kind::Block;
  ArrayPtr mpArray;
  std::vector<unsigned char> mInput;
  std::vector<unsigned char> mOutput;
  bool mIsDone = false;
  bool mHasFailed = false;
};

std::uint64_t CompressedBlocks::WriteOffset(SafeOutput& output) {
  output.Write("offset=\"");
  const std::uint64_t position = output.GetPosition();
  output.Write(std::string(kOffsetWidth, ' '));
  return position;
}

CompressedBlocks::CompressedBlocks(SafeOutput& output, Order order)
    : mOutput(output),
      mStart(output.GetPosition()),
      mpSpilled(order == Order::Interleaved ? std::make_unique<SpilledBytes>(output) : nullptr),
      mMostJobs(8 * std::size_t{QovJbf::GetThreadCount(kBlockSize)}),
      mWorkers(QovJbf::GetThreadCount(kBlockSize)) {}

CompressedBlocks::~CompressedBlocks() = default;

CompressedBlocks::ArrayPtr CompressedBlocks::Begin(std::uint64_t size,
                                                   std::uint64_t offsetPosition) {
  auto array = std::make_shared<Array>();
  array->mSize = size;
  array->mOffsetPosition = offsetPosition;
  if (mpSpilled) {
    mArrays.push_back(array);
  } else {
    Push(std::make_shared<Job>(Job{Job::Kind::Header, array, {}, {}, true}));
  }
  return array;
}

void CompressedBlocks::Append(const ArrayPtr& array, const void* data, std::size_t size) {
  const auto* bytes = static_cast<const unsigned char*>(data);
  std::vector<unsigned char>& block = array->mBlock;
  array->mAppended += size;
  while (size != 0) {
    const std::size_t taken = std::min(size, kBlockSize - block.size());
    block.insert(block.end(), bytes, bytes + taken);
    bytes += taken;
    size -= taken;
    if (block.size() == kBlockSize) PostBlock(array);
  }
}

void CompressedBlocks::End(const ArrayPtr& array) {
  if (array->mAppended != array->mSize) {
    Util::Raise(kSource, ErrorType::MismatchError,
                fmt::format("an array has {} bytes of values, but its mesh needs {}",
                            array->mAppended, array->mSize));
  }
  if (!array->mBlock.empty()) PostBlock(array);
  if (!mpSpilled) Push(std::make_shared<Job>(Job{Job::Kind::End, array, {}, {}, true}));
}

void CompressedBlocks::Finish() {
  while (!mJobs.empty()) WriteFirst();
  for (const ArrayPtr& array : mArrays) {
    WriteHeader(*array);
    CopyBlocks(*array);
  }
}

void CompressedBlocks::Push(std::shared_ptr<Job> job) {
  while (mJobs.size() >= mMostJobs) WriteFirst();
  mJobs.push_back(std::move(job));
}

void CompressedBlocks::PostBlock(const ArrayPtr& array) {
  auto job = std::make_shared<Job>();
  job->mpArray = array;
  job->mInput.swap(array->mBlock);
  Push(job);
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
  // The header is written twice: first to make room, then with the lengths.
  switch (job->mKind) {
    case Job::Kind::Header:
      return WriteHeader(*job->mpArray);
    case Job::Kind::Block:
      return WriteBlock(*job);
    case Job::Kind::End:
      return mOutput.Patch(job->mpArray->mHeaderPosition, job->mpArray->GetHeader());
  }
}

void CompressedBlocks::WriteBlock(Job& job) {
  if (job.mHasFailed) {
    Util::Raise(kSource, ErrorType::MemoryAllocationError,
                "there is not enough memory for compressing an array");
  }
  job.mpArray->mCompressedSizes.push_back(job.mOutput.size());
  if (!mpSpilled) return mOutput.Write(job.mOutput.data(), job.mOutput.size());
  job.mpArray->mSpilledPositions.push_back(mpSpilled->GetSize());
  mpSpilled->Append(job.mOutput.data(), job.mOutput.size());
}

void CompressedBlocks::WriteHeader(Array& array) {
  array.mHeaderPosition = mOutput.GetPosition();
  mOutput.Patch(
      array.mOffsetPosition,
      fmt::format("{:<{}}", fmt::format("{}\"", array.mHeaderPosition - mStart), kOffsetWidth));
  mOutput.Write(array.GetHeader());
}

void CompressedBlocks::CopyBlocks(const Array& array) {
  std::vector<unsigned char> block;
  for (std::size_t i = 0; i < array.mCompressedSizes.size(); ++i) {
    block.resize(array.mCompressedSizes[i]);
    mpSpilled->Read(array.mSpilledPositions[i], block.data(), block.size());
    mOutput.Write(block.data(), block.size());
  }
}

}  // namespace Qov::Tools
