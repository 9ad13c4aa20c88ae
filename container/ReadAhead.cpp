#include "ReadAhead.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <functional>
#include <iterator>
#include <new>
#include <queue>

#include "BlockCache.h"
#include "ContainerFormat.h"
#include "Descriptor.h"
#include "Qov/Util/Assert.h"
#include "SourceFile.h"
#include "SystemResources.h"
#include "ThreadCount.h"
#include "WholeBlock.h"

namespace QovJbf {

namespace {

/// Returns the number of bytes that are in memory while the block is decompressed.
std::uint64_t GetSize(const StreamReader::BlockExtent& extent) {
  return std::uint64_t{extent.mRawLength} + extent.mStoredSize;
}

/// Returns a closed descriptor if the file cannot be opened. The reader reports the reason when it
/// reads the block itself.
Descriptor OpenFile(const StreamReader& reader) {
  try {
    return Descriptor(reader.OpenDescriptor());
  } catch (const std::exception&) {
    return Descriptor(-1);
  }
}

}  // namespace

/// A block that is being decompressed.
struct ReadAhead::Job {
  enum class State : std::uint8_t { Running, Sound, Failed };

  Job(std::shared_ptr<ChunkPool> buffers, Descriptor file)
      : mpBuffers(std::move(buffers)), mFile(std::move(file)) {}
  ~Job() { mpBuffers->Return(std::move(mContent)); }
  Job(const Job&) = delete;
  Job& operator=(const Job&) = delete;

  std::shared_ptr<ChunkPool> mpBuffers;
  Descriptor mFile;
  std::uint64_t mPosition = 0;
  std::uint32_t mStoredSize = 0;
  std::uint32_t mRawLength = 0;
  Chunk mContent;                 ///< Used by the worker until the job is done.
  State mState = State::Running;  ///< Guarded by the mutex.
};

/// Returns the length of the content, or 0 if the block is damaged.
std::uint32_t ReadAhead::Decompress(const Job& job, const Descriptor& file, unsigned char* stored,
                                    unsigned char* content) {
  const bool isRead = job.mStoredSize >= kRawLengthSize &&
                      ReadFully(file, job.mPosition, stored, job.mStoredSize) &&
                      std::memcmp(stored, &job.mRawLength, kRawLengthSize) == 0;
  const std::size_t length =
      isRead ? DecompressWhole(stored + kRawLengthSize, job.mStoredSize - kRawLengthSize, content,
                               job.mRawLength)
             : 0;
  return length == 0 ? 0 : job.mRawLength;
}

ReadAhead* ReadAhead::spCurrent = nullptr;

ReadAhead::ReadAhead(const Parts& parts, std::uint64_t memory)
    : mpPrevious(spCurrent),
      mMostMemory(memory),
      mMemory(0),
      mCacheSize(0),
      mMostStarted(CountWorkerHandles()),
      mNext(mBlocks.end()),
      mpBuffers(GetBlockBuffers()),
      mWorkers(GetThreadCount(0)) {
  const SystemResources resources;
  const std::uint64_t free = std::min(resources.GetFreeMemory(), resources.GetFreeAddressSpace());
  mMostMemory = std::min(mMostMemory, free / 4);
  Plan(parts);
  spCurrent = this;
  BlockCache::Instance().SetSize(mCacheSize);
}

ReadAhead::~ReadAhead() {
  spCurrent = mpPrevious;
  BlockCache::Instance().SetSize(mpPrevious == nullptr ? BlockCache::kMaxBytes
                                                       : mpPrevious->mCacheSize);
}

void ReadAhead::Append(const Parts& parts) {
  QOV_ASSERT(spCurrent == this);
  Plan(parts);
  BlockCache::Instance().SetSize(mCacheSize);
  StartNext();
}

/// Adds the blocks of the parts, and decides which of them are decompressed ahead.
void ReadAhead::Plan(const Parts& parts) {
  const Blocks::iterator firstNew = AddAll(parts);
  mMemory = mMostMemory;
  mCacheSize = kCacheSize;
  LeaveOutExcess(firstNew);
  if (!mBlocks.empty() && !NeedsCache()) return;
  mCacheSize = BlockCache::kMaxBytes;
  mMemory = std::min(mMostMemory, kLeastMemory);
  LeaveOutExcess(mNext);
}

/// Returns the first block that was not planned before.
ReadAhead::Blocks::iterator ReadAhead::AddAll(const Parts& parts) {
  const std::size_t numBefore = mBlocks.size();
  for (const Part& part : parts) Add(part, mNumParts++);
  const Blocks::iterator firstNew =
      std::prev(mBlocks.end(), static_cast<std::ptrdiff_t>(mBlocks.size() - numBefore));
  if (mNext == mBlocks.end()) mNext = firstNew;
  return firstNew;
}

void ReadAhead::Add(const Part& part, std::size_t use) {
  std::uint64_t offset = part.mOffset;
  const std::uint64_t end = offset + part.mSize;
  while (offset < end) {
    const auto extent = part.mpReader->FindBlock(offset, 1);
    if (!extent) return;
    const std::uint64_t partEnd = std::min(end, extent->mStart + extent->mRawLength);
    Planned& planned = FindOrAdd(part, *extent, use);
    planned.mLastUse = use;
    planned.mUnread += partEnd - offset;
    offset = partEnd;
  }
}

/// Returns the block of a part.
ReadAhead::Planned& ReadAhead::FindOrAdd(const Part& part, const StreamReader::BlockExtent& extent,
                                         std::size_t use) {
  const Key key{part.mpReader, extent.mBlock};
  const auto place = mPlaces.find(key);
  if (place != mPlaces.end()) return *place->second;
  const auto added =
      mBlocks.insert(mBlocks.end(), {part.mpReader, extent, use, use, 0, false, false, nullptr});
  try {
    mPlaces.emplace(key, added);
  } catch (...) {
    mBlocks.erase(added);
    throw;
  }
  return *added;
}

/// Returns true if a block that is left out would not fit into the small cache.
bool ReadAhead::NeedsCache() const {
  return std::any_of(mBlocks.begin(), mBlocks.end(),
                     [](const Planned& planned) { return planned.mNeedsCache; });
}

/// Leaves out blocks from `first` on that do not fit into the memory together with those that are
/// kept at the same time. The blocks before `first` stay as they are.
void ReadAhead::LeaveOutExcess(Blocks::iterator first) {
  using Kept = std::pair<std::size_t, std::uint64_t>;  // last use, bytes
  std::priority_queue<Kept, std::vector<Kept>, std::greater<>> kept;
  std::uint64_t numKept = 0;
  const auto keep = [&](const Planned& planned) {
    kept.emplace(planned.mLastUse, planned.mExtent.mRawLength);
    numKept += planned.mExtent.mRawLength;
  };
  for (const Planned* started : mStarted) keep(*started);
  bool isDecided = true;
  for (Blocks::iterator planned = mNext; planned != mBlocks.end(); ++planned) {
    isDecided = isDecided && planned != first;
    if (planned->mpJob || (isDecided && planned->mIsLeftOut)) continue;
    for (; !kept.empty() && kept.top().first < planned->mFirstUse; kept.pop()) {
      numKept -= kept.top().second;
    }
    const StreamReader::BlockExtent& extent = planned->mExtent;
    if (!isDecided) {
      planned->mIsLeftOut = !extent.mCompressed || numKept + GetSize(extent) > mMemory;
      // Blocks that are left out because another one needs the cache are no reason to keep it.
      if (mMemory == mMostMemory) {
        planned->mNeedsCache =
            planned->mIsLeftOut && extent.mCompressed && extent.mRawLength > kCacheSize;
      }
    }
    if (!planned->mIsLeftOut) keep(*planned);
  }
}

void ReadAhead::Provide(const StreamReader& reader, Contents& contents) {
  for (Planned& planned : mBlocks) {
    if (mStarted.size() >= mMostStarted) return;
    if (planned.mpReader != &reader || planned.mIsLeftOut) continue;
    const auto content = contents.find(reader.GetPosition(planned.mExtent));
    if (content == contents.end() || content->second.mSize != planned.mExtent.mRawLength) continue;
    planned.mpJob = std::make_shared<Job>(mpBuffers, Descriptor(-1));
    planned.mpJob->mContent = std::move(content->second);
    planned.mpJob->mState = Job::State::Sound;
    mStarted.push_back(&planned);
    contents.erase(content);
  }
}

ReadAhead::Planned* ReadAhead::Find(const StreamReader& reader, std::size_t block) {
  const auto place = mPlaces.find({&reader, block});
  if (place == mPlaces.end() || place->second->mIsLeftOut) return nullptr;
  return &*place->second;
}

bool ReadAhead::Read(const StreamReader& reader, std::size_t block, std::uint32_t within,
                     void* target, std::uint32_t n) {
  Planned* planned = spCurrent == nullptr ? nullptr : spCurrent->Find(reader, block);
  const unsigned char* content = planned == nullptr ? nullptr : spCurrent->GetContent(*planned);
  if (content == nullptr) return false;
  std::memcpy(target, content + within, n);
  spCurrent->mPosition = std::max(spCurrent->mPosition, planned->mFirstUse);
  planned->mUnread -= std::min<std::uint64_t>(planned->mUnread, n);
  if (planned->mUnread == 0) spCurrent->LeaveOut(*planned);
  spCurrent->StartNext();
  return true;
}

bool ReadAhead::IsSound(const StreamReader& reader, std::size_t block) {
  Planned* planned = spCurrent == nullptr ? nullptr : spCurrent->Find(reader, block);
  return planned != nullptr && spCurrent->GetContent(*planned) != nullptr;
}

void ReadAhead::Forget(const StreamReader& reader) {
  for (ReadAhead* ahead = spCurrent; ahead != nullptr; ahead = ahead->mpPrevious) {
    auto place = ahead->mPlaces.lower_bound({&reader, 0});
    while (place != ahead->mPlaces.end() && place->first.first == &reader) {
      const Blocks::iterator planned = place->second;
      ahead->LeaveOut(*planned);
      if (ahead->mNext == planned) ++ahead->mNext;
      ahead->mBlocks.erase(planned);
      place = ahead->mPlaces.erase(place);
    }
  }
}

/// Returns null if the block is damaged or if it cannot be started.
const unsigned char* ReadAhead::GetContent(Planned& planned) {
  if (!planned.mpJob && !StartNow(planned)) return nullptr;
  const std::shared_ptr<Job> job = planned.mpJob;
  {
    std::unique_lock lock(mMutex);
    mDone.wait(lock, [&job] { return job->mState != Job::State::Running; });
  }
  if (job->mState == Job::State::Sound) return job->mContent.mData.get();
  LeaveOut(planned);
  return nullptr;
}

/// Starts a block before its turn, because the caller has skipped parts. Leaves out the blocks that
/// come before it.
bool ReadAhead::StartNow(Planned& planned) {
  mPosition = std::max(mPosition, planned.mFirstUse);
  for (; &*mNext != &planned; ++mNext) {
    if (!mNext->mpJob) LeaveOut(*mNext);
  }
  if (StartIfItFits(planned)) ++mNext;
  StartNext();
  if (!planned.mpJob) LeaveOut(planned);
  return planned.mpJob != nullptr;
}

/// Starts blocks in the order of their first use, as long as there is memory. Without workers,
/// blocks are decompressed when they are read, because earlier would only take memory.
void ReadAhead::StartNext() {
  if (!mWorkers.HasThreads()) return;
  while (mNext != mBlocks.end() && StartIfItFits(*mNext)) ++mNext;
}

/// Returns false if there is no memory for the block now, true also if there is nothing to
/// start.
bool ReadAhead::StartIfItFits(Planned& planned) {
  if (planned.mIsLeftOut || planned.mpJob) return true;
  if (!Fits(planned)) DropPassed();
  if (!Fits(planned)) return false;
  Start(planned);
  return true;
}

/// Drops blocks whose last part was skipped.
void ReadAhead::DropPassed() {
  for (Planned* started : std::vector(mStarted)) {
    if (started->mLastUse < mPosition) LeaveOut(*started);
  }
}

bool ReadAhead::Fits(const Planned& planned) {
  if (mStarted.size() >= mMostStarted) return false;
  std::uint64_t used = 0;
  const std::lock_guard lock(mMutex);
  for (const Planned* started : mStarted) {
    used += started->mExtent.mRawLength;
    if (started->mpJob->mState == Job::State::Running) used += started->mExtent.mStoredSize;
  }
  return used + GetSize(planned.mExtent) <= mMemory;
}

void ReadAhead::Start(Planned& planned) {
  Descriptor file = OpenFile(*planned.mpReader);
  if (!file.IsOpen()) {
    planned.mIsLeftOut = true;
    return;
  }
  const StreamReader::BlockExtent& extent = planned.mExtent;
  try {
    planned.mpJob = std::make_shared<Job>(mpBuffers, std::move(file));
    planned.mpJob->mPosition = planned.mpReader->GetPosition(extent);
    planned.mpJob->mStoredSize = extent.mStoredSize;
    planned.mpJob->mRawLength = extent.mRawLength;
    mStarted.push_back(&planned);
    mWorkers.Post([this, job = planned.mpJob] { Run(*job); });
  } catch (const std::bad_alloc&) {
    LeaveOut(planned);  // nobody would end the job
  }
}

/// Runs on a worker. The reader reports the reason of a failure when it reads the block itself.
void ReadAhead::Run(Job& job) {
  Chunk content;
  try {
    const Descriptor file = std::move(job.mFile);
    content = mpBuffers->TakeForBlock(job.mRawLength);  // first, because it is the larger one
    Chunk stored = mpBuffers->TakeForBlock(job.mStoredSize);
    content.mSize = Decompress(job, file, stored.mData.get(), content.mData.get());
    mpBuffers->Return(std::move(stored));
  } catch (const std::bad_alloc&) {
    mpBuffers->Return(std::exchange(content, Chunk()));
  }
  const std::lock_guard lock(mMutex);
  job.mState = content.mSize > 0 ? Job::State::Sound : Job::State::Failed;
  job.mContent = std::move(content);
  mDone.notify_all();
}

/// Lets the readers read the block as usual, and frees its memory.
void ReadAhead::LeaveOut(Planned& planned) {
  planned.mIsLeftOut = true;
  if (!planned.mpJob) return;
  planned.mpJob.reset();
  std::erase(mStarted, &planned);
}

}  // namespace QovJbf
