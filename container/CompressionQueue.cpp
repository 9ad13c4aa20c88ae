#include "CompressionQueue.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <utility>

#include "BlockDeflater.h"
#include "Qov/Util/Assert.h"
#include "Qov/Util/Raise.h"
#include "Sources.h"
#include "WholeBlock.h"

namespace QovJbf {

/// The mutex of the queue guards all members except mDeflater, which the worker in Run uses.
class CompressionQueue::Job {
 private:
  friend class CompressionQueue;

  std::deque<Chunk> mInput;
  bool mIsAtOnce = false;  // the first part is the whole content
  bool mIsWhole = false;   // no more input
  bool mIsEnded = false;   // no more output
  bool mIsPosted = false;  // queued for a worker or in work
  std::vector<Chunk> mOutput;
  std::optional<BlockDeflater> mDeflater;
};

CompressionQueue::CompressionQueue(unsigned threads, std::uint64_t memory, int level,
                                   Compressor compressor)
    : mLevel(level), mCompressor(compressor), mBound(memory), mWorkers(threads) {}

CompressionQueue::~CompressionQueue() { mIsEnding = true; }

CompressionQueue::JobHandle CompressionQueue::Begin() { return std::make_shared<Job>(); }

void CompressionQueue::Add(const JobHandle& job, Chunk part) {
  {
    const std::lock_guard lock(mMutex);
    QOV_ASSERT(part.mSize > 0);
    job->mInput.push_back(std::move(part));
    ++mNumWaiting;
  }
  Post(job);
}

void CompressionQueue::Finish(const JobHandle& job) {
  {
    const std::lock_guard lock(mMutex);
    job->mIsWhole = true;
    ++mNumWaiting;
  }
  Post(job);
}

void CompressionQueue::AddWhole(const JobHandle& job, Chunk content) {
  if (mCompressor == Compressor::Zlib) {
    Add(job, std::move(content));
    Finish(job);
    return;
  }
  {
    const std::lock_guard lock(mMutex);
    QOV_ASSERT(content.mSize > 0 && job->mInput.empty());
    job->mInput.push_back(std::move(content));
    job->mIsAtOnce = true;
    job->mIsWhole = true;
    ++mNumWaiting;
  }
  Post(job);
}

// Queues the job for a worker, unless a worker has it. That worker continues with the new input.
void CompressionQueue::Post(const JobHandle& job) {
  {
    const std::lock_guard lock(mMutex);
    if (std::exchange(job->mIsPosted, true)) return;
  }
  mWorkers.Post([this, job] { Run(*job); });
}

CompressionQueue::Output CompressionQueue::TakeOutput(Job& job) {
  const std::lock_guard lock(mMutex);
  RaiseIfFailed();
  return {std::exchange(job.mOutput, {}), job.mIsEnded};
}

bool CompressionQueue::HasRoom(std::size_t n) {
  const std::lock_guard lock(mMutex);
  return mPool.GetUsed() + n <= mBound || mNumWaiting == 0 || mHasFailed;
}

void CompressionQueue::RaiseBound(std::uint64_t memory) {
  const std::lock_guard lock(mMutex);
  mBound = std::max(mBound, memory);
}

void CompressionQueue::Wait() {
  std::unique_lock lock(mMutex);
  mProgress.wait(lock,
                 [this] { return mNumDelivered != mNumSeen || mNumWaiting == 0 || mHasFailed; });
  mNumSeen = mNumDelivered;
  RaiseIfFailed();
}

void CompressionQueue::RaiseIfFailed() const {
  if (mHasFailed) Qov::Util::RaiseOutOfMemory(kCompressorSource);
}

// The functions below run on the threads of the WorkerPool.

void CompressionQueue::Run(Job& job) {
  try {
    while (auto part = TakeInput(job)) Compress(job, std::move(*part));
  } catch (const std::exception&) {
    const std::lock_guard lock(mMutex);
    mHasFailed = true;
    mProgress.notify_all();
  }
}

// Returns the next part of the content, an empty part for its end, or nothing if there is no input.
std::optional<Chunk> CompressionQueue::TakeInput(Job& job) {
  const std::lock_guard lock(mMutex);
  if (mHasFailed || mIsEnding) return std::nullopt;
  Chunk part;
  if (!job.mInput.empty()) {
    part = std::move(job.mInput.front());
    job.mInput.pop_front();
  } else if (!job.mIsWhole || job.mIsEnded) {
    job.mIsPosted = false;
    return std::nullopt;
  }
  return part;
}

void CompressionQueue::Compress(Job& job, Chunk part) {
  const bool isEnd = part.mSize == 0 || job.mIsAtOnce;
  if (job.mIsAtOnce) {
    Chunk output = CompressAtOnce(part);
    mPool.Return(std::move(part));
    std::vector<Chunk> outputs;
    outputs.push_back(std::move(output));
    Deliver(job, std::move(outputs));
  } else {
    CompressWithZlib(job, part);
    mPool.Return(std::move(part));
  }
  const std::lock_guard lock(mMutex);
  job.mIsEnded = isEnd;
  --mNumWaiting;
  ++mNumDelivered;
  mProgress.notify_all();
}

// Compresses a part, or ends the stream if the part is empty.
void CompressionQueue::CompressWithZlib(Job& job, const Chunk& part) {
  if (!job.mDeflater) job.mDeflater.emplace(mPool, mLevel);
  for (std::size_t at = 0; at < part.mSize && !mIsEnding; at += ChunkPool::kChunkSize) {
    const std::size_t n = std::min(ChunkPool::kChunkSize, part.mSize - at);
    Deliver(job, job.mDeflater->Add(part.mData.get() + at, n));
  }
  if (part.mSize > 0) return;
  Deliver(job, job.mDeflater->Finish());
  job.mDeflater.reset();
}

Chunk CompressionQueue::CompressAtOnce(const Chunk& content) {
  Chunk output = mPool.Take(GetWholeBound(content.mSize));
  output.mSize = CompressWhole(mLevel, content.mData.get(), content.mSize, output.mData.get());
  return output;
}

void CompressionQueue::Deliver(Job& job, std::vector<Chunk> output) {
  if (output.empty()) return;
  const std::lock_guard lock(mMutex);
  std::move(output.begin(), output.end(), std::back_inserter(job.mOutput));
  ++mNumDelivered;
  mProgress.notify_all();
}

}  // namespace QovJbf
