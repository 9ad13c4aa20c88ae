#include "check/BlocksAhead.h"

#include <new>
#include <utility>

#include "container/ThreadCount.h"

namespace Qov::Tools {

BlocksAhead::BlocksAhead()
    : mHasWorkers(QovJbf::GetThreadCount(0) > 1),
      mpBuffers(QovJbf::GetBlockBuffers()),
      mWorkers(QovJbf::GetThreadCount(0)) {}

void BlocksAhead::Add(Block block) { mBlocks.push_back({std::move(block), 0, nullptr}); }

void BlocksAhead::Start() {
  for (; mHasWorkers && mNumPassed < mBlocks.size(); ++mNumPassed) {
    Pending& next = mBlocks[mNumPassed];
    const auto length =
        ReadWholeLength(*next.mBlock.mpFile, next.mBlock.mPosition, next.mBlock.mSize);
    if (!length) continue;
    const std::uint64_t numBytes = std::uint64_t{*length} + next.mBlock.mSize;
    {
      const std::lock_guard lock(mMutex);
      const bool fits = mNumStarted == 0 || mNumBytes + mNumKept + numBytes <= kMemory;
      if (mNumStarted >= kMostStarted || !fits) return;
      mNumBytes += numBytes;
    }
    next.mRawLength = *length;
    Start(next);
  }
}

void BlocksAhead::Start(Pending& next) {
  try {
    next.mpJob = std::make_shared<Job>();
    mWorkers.Post([this, block = next.mBlock, job = next.mpJob] { Run(block, *job); });
    ++mNumStarted;
  } catch (const std::bad_alloc&) {
    next.mpJob.reset();  // nobody would end the job
    const std::lock_guard lock(mMutex);
    mNumBytes -= std::uint64_t{next.mRawLength} + next.mBlock.mSize;
  }
}

/// Runs on a worker.
void BlocksAhead::Run(const Block& block, Job& job) {
  std::optional<WholeBlock> content =
      InflateWholeBlock(*block.mpFile, block.mPosition, block.mSize, *mpBuffers);
  const std::lock_guard lock(mMutex);
  job.mContent = std::move(content);
  job.mIsDone = true;
  mNumBytes -= block.mSize;
  mDone.notify_all();
}

std::optional<WholeBlock> BlocksAhead::Take(const Block& block) {
  while (!(mBlocks.front().mBlock == block)) DropFirst();
  const bool isStarted = mBlocks.front().mpJob != nullptr;
  std::optional<WholeBlock> content = TakeFirst();
  if (!isStarted) {
    content = InflateWholeBlock(*block.mpFile, block.mPosition, block.mSize, *mpBuffers);
  }
  if (content) mNumKept += content->mRawLength;
  Start();
  return content;
}

void BlocksAhead::Return(WholeBlock content) {
  mNumKept -= content.mRawLength;
  mpBuffers->Return(std::move(content.mContent));
  Start();
}

void BlocksAhead::DropKept() {
  mNumKept = 0;
  Start();
}

void BlocksAhead::DropFirst() {
  std::optional<WholeBlock> content = TakeFirst();
  if (content) mpBuffers->Return(std::move(content->mContent));
}

/// Removes the first block, and returns its content if it was started.
std::optional<WholeBlock> BlocksAhead::TakeFirst() {
  const Pending first = std::move(mBlocks.front());
  mBlocks.pop_front();
  if (mNumPassed > 0) --mNumPassed;
  if (!first.mpJob) return std::nullopt;
  std::unique_lock lock(mMutex);
  mDone.wait(lock, [&first] { return first.mpJob->mIsDone; });
  --mNumStarted;
  mNumBytes -= first.mRawLength;
  return std::move(first.mpJob->mContent);
}

}  // namespace Qov::Tools
