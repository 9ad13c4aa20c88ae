#include "ReadAhead.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <functional>
#include <new>
#include <queue>

#include "BlockCache.h"
#include "ContainerFormat.h"
#include "Descriptor.h"
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

  Descriptor mFile;
  std::uint64_t mPosition;
  std::uint32_t mStoredSize;
  std::uint32_t mRawLength;
  MallocBuffer mContent;          ///< Used by the worker until the job is done.
  State mState = State::Running;  ///< Guarded by the mutex.
};

ReadAhead* ReadAhead::spCurrent = nullptr;

ReadAhead::ReadAhead(const Parts& parts, std::uint64_t memory)
    : mpPrevious(spCurrent),
      mMemory(memory),
      mCacheSize(kCacheSize),
      mMostStarted(CountWorkerHandles()),
      mWorkers(GetThreadCount(0)) {
  const SystemResources resources;
  const std::uint64_t free = std::min(resources.GetFreeMemory(), resources.GetFreeAddressSpace());
  mMemory = std::min(mMemory, free / 4);
  for (std::size_t i = 0; i < parts.size(); ++i) Add(parts[i], i);
  LeaveOutExcess();
  if (mBlocks.empty() || LeavesOutLargeBlock()) {
    mCacheSize = BlockCache::kMaxBytes;
    mMemory = std::min(mMemory, kLeastMemory);
    LeaveOutExcess();
  }
  spCurrent = this;
  BlockCache::Instance().SetSize(mCacheSize);
}

ReadAhead::~ReadAhead() {
  spCurrent = mpPrevious;
  BlockCache::Instance().SetSize(mpPrevious == nullptr ? BlockCache::kMaxBytes
                                                       : mpPrevious->mCacheSize);
}

void ReadAhead::Add(const Part& part, std::size_t use) {
  std::uint64_t offset = part.mOffset;
  const std::uint64_t end = offset + part.mSize;
  while (offset < end) {
    const auto extent = part.mpReader->FindBlock(offset, 1);
    if (!extent) return;
    const std::uint64_t partEnd = std::min(end, extent->mStart + extent->mRawLength);
    const auto [place, isNew] =
        mPlaces.try_emplace({part.mpReader, extent->mBlock}, mBlocks.size());
    if (isNew) mBlocks.push_back({part.mpReader, *extent, use, use, 0, false, nullptr});
    Planned& planned = mBlocks[place->second];
    planned.mLastUse = use;
    planned.mUnread += partEnd - offset;
    offset = partEnd;
  }
}

/// Returns true if a block that is left out would not fit into the small cache.
bool ReadAhead::LeavesOutLargeBlock() const {
  return std::any_of(mBlocks.begin(), mBlocks.end(), [](const Planned& planned) {
    return planned.mIsLeftOut && planned.mExtent.mCompressed &&
           planned.mExtent.mRawLength > kCacheSize;
  });
}

/// Leaves out blocks that do not fit into the memory together with those that are kept at the same
/// time.
void ReadAhead::LeaveOutExcess() {
  using Kept = std::pair<std::size_t, std::uint64_t>;  // last use, bytes
  std::priority_queue<Kept, std::vector<Kept>, std::greater<>> kept;
  std::uint64_t numKept = 0;
  for (Planned& planned : mBlocks) {
    for (; !kept.empty() && kept.top().first < planned.mFirstUse; kept.pop()) {
      numKept -= kept.top().second;
    }
    const StreamReader::BlockExtent& extent = planned.mExtent;
    planned.mIsLeftOut = !extent.mCompressed || numKept + GetSize(extent) > mMemory;
    if (planned.mIsLeftOut) continue;
    kept.emplace(planned.mLastUse, extent.mRawLength);
    numKept += extent.mRawLength;
  }
}

void ReadAhead::Provide(const StreamReader& reader, Contents& contents) {
  for (std::size_t i = 0; i < mBlocks.size() && mStarted.size() < mMostStarted; ++i) {
    Planned& planned = mBlocks[i];
    if (planned.mpReader != &reader || planned.mIsLeftOut) continue;
    const auto content = contents.find(reader.GetPosition(planned.mExtent));
    if (content == contents.end()) continue;
    planned.mpJob = std::make_shared<Job>(
        Job{Descriptor(-1), 0, 0, 0, std::move(content->second), Job::State::Sound});
    mStarted.push_back(i);
    contents.erase(content);
  }
}

ReadAhead::Planned* ReadAhead::Find(const StreamReader& reader, std::size_t block) {
  const auto place = mPlaces.find({&reader, block});
  if (place == mPlaces.end() || mBlocks[place->second].mIsLeftOut) return nullptr;
  return &mBlocks[place->second];
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
    for (auto place = ahead->mPlaces.lower_bound({&reader, 0});
         place != ahead->mPlaces.end() && place->first.first == &reader; ++place) {
      ahead->LeaveOut(ahead->mBlocks[place->second]);
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
  if (job->mState == Job::State::Sound) return job->mContent.get();
  LeaveOut(planned);
  return nullptr;
}

/// Starts a block before its turn, because the caller has skipped parts. Leaves out the blocks that
/// come before it.
bool ReadAhead::StartNow(Planned& planned) {
  mPosition = std::max(mPosition, planned.mFirstUse);
  for (; &mBlocks[mNext] != &planned; ++mNext) {
    if (!mBlocks[mNext].mpJob) LeaveOut(mBlocks[mNext]);
  }
  StartNext();
  if (!planned.mpJob) LeaveOut(planned);
  return planned.mpJob != nullptr;
}

/// Starts blocks in the order of their first use, as long as there is memory.
void ReadAhead::StartNext() {
  for (; mNext < mBlocks.size(); ++mNext) {
    Planned& planned = mBlocks[mNext];
    if (planned.mIsLeftOut || planned.mpJob) continue;
    if (!Fits(planned)) DropPassed();
    if (!Fits(planned)) return;
    Start(planned);
  }
}

/// Drops blocks whose last part was skipped.
void ReadAhead::DropPassed() {
  for (const std::size_t i : std::vector(mStarted)) {
    if (mBlocks[i].mLastUse < mPosition) LeaveOut(mBlocks[i]);
  }
}

bool ReadAhead::Fits(const Planned& planned) {
  if (mStarted.size() >= mMostStarted) return false;
  std::uint64_t used = 0;
  const std::lock_guard lock(mMutex);
  for (const std::size_t i : mStarted) {
    const Planned& other = mBlocks[i];
    used += other.mExtent.mRawLength;
    if (other.mpJob->mState == Job::State::Running) used += other.mExtent.mStoredSize;
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
  planned.mpJob = std::make_shared<Job>(Job{std::move(file), planned.mpReader->GetPosition(extent),
                                            extent.mStoredSize, extent.mRawLength, nullptr,
                                            Job::State::Running});
  try {
    mStarted.push_back(static_cast<std::size_t>(&planned - mBlocks.data()));
    mWorkers.Post([this, job = planned.mpJob] { Run(*job); });
  } catch (const std::bad_alloc&) {
    LeaveOut(planned);  // nobody would end the job
  }
}

/// Runs on a worker. The reader reports the reason of a failure when it reads the block itself.
void ReadAhead::Run(Job& job) {
  bool isSound = false;
  {
    const Descriptor file = std::move(job.mFile);
    const MallocBuffer stored = TryToAllocate(job.mStoredSize);
    MallocBuffer content = TryToAllocate(job.mRawLength);
    isSound = stored && content && job.mStoredSize >= kRawLengthSize &&
              ReadFully(file, job.mPosition, stored.get(), job.mStoredSize) &&
              std::memcmp(stored.get(), &job.mRawLength, kRawLengthSize) == 0 &&
              DecompressWhole(stored.get() + kRawLengthSize, job.mStoredSize - kRawLengthSize,
                              content.get(), job.mRawLength) != 0;
    if (isSound) job.mContent = std::move(content);
  }
  const std::lock_guard lock(mMutex);
  job.mState = isSound ? Job::State::Sound : Job::State::Failed;
  mDone.notify_all();
}

/// Lets the readers read the block as usual, and frees its memory.
void ReadAhead::LeaveOut(Planned& planned) {
  planned.mIsLeftOut = true;
  if (!planned.mpJob) return;
  planned.mpJob.reset();
  std::erase(mStarted, static_cast<std::size_t>(&planned - mBlocks.data()));
}

}  // namespace QovJbf
