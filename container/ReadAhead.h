#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "ChunkPool.h"
#include "Descriptor.h"
#include "MallocBuffer.h"
#include "Qov/Jbf/StreamReader.h"
#include "WorkerPool.h"

namespace QovJbf {

/// Decompresses blocks on worker threads before they are read.
///
/// The caller lists the parts of streams that it is going to read, in order, and reads them through
/// StreamReader while this object exists:
///
///   parts     a1 a2 | b1 | a3 | b2        a: in a block of one file, b: in a block of another
///   block a   |-- started --|- kept -|    until a3 is read
///   block b     |- started -| ....
///
/// A block is decompressed as a whole and only once. It is kept until its last part is read. Blocks
/// that would exceed the memory are left out: StreamReader reads them as usual. So are damaged
/// blocks, so that the errors do not depend on this object. The parts are only a forecast: it is
/// allowed, but slower, to read something else. Parts of further files can be appended while
/// earlier ones are read.
///
/// Objects are used by the thread that uses the readers. The latest one serves all readers.
class ReadAhead {
 public:
  struct Part {
    const StreamReader* mpReader;
    std::uint64_t mOffset;  ///< In uncompressed bytes of the stream.
    std::uint64_t mSize;
  };
  using Parts = std::vector<Part>;

  /// Bytes of blocks, decompressed and compressed, that are in memory at a time. The cache of
  /// decompressed blocks has kCacheSize meanwhile. If a block that does not fit into either is left
  /// out, or if there are no parts, the cache keeps its size and kLeastMemory is used.
  static constexpr std::uint64_t kMemory = std::uint64_t{160} << 20;
  static constexpr std::uint64_t kLeastMemory = std::uint64_t{16} << 20;
  static constexpr std::uint64_t kCacheSize = std::uint64_t{16} << 20;

  explicit ReadAhead(const Parts& parts, std::uint64_t memory = kMemory);
  ~ReadAhead();
  ReadAhead(const ReadAhead&) = delete;
  ReadAhead& operator=(const ReadAhead&) = delete;

  /// Starts to decompress before the first read, as long as there is memory. Has no effect with one
  /// thread, which decompresses blocks when they are read.
  void Start() { StartNext(); }

  /// Appends parts that are read after the earlier ones, and starts to decompress their blocks if
  /// there is memory left. This object must be the latest one.
  void Append(const Parts& parts);

  /// Decompressed blocks of a file, by their positions in it.
  using Contents = std::map<std::uint64_t, Chunk>;
  /// Uses the blocks of `contents` that are planned for the reader instead of decompressing them.
  /// Called before the first read. The others stay in `contents`.
  void Provide(const StreamReader& reader, Contents& contents);

  /// Copies `n` bytes at offset `within` of a block to `target`, and counts them as read. Waits
  /// until the block is decompressed. Returns false if it is not decompressed ahead, or damaged.
  static bool Read(const StreamReader& reader, std::size_t block, std::uint32_t within,
                   void* target, std::uint32_t n);
  /// Returns true if the checksum of the block is right. Waits. Returns false if that is not known.
  static bool IsSound(const StreamReader& reader, std::size_t block);
  /// Drops all blocks of the reader, which is going to be destroyed.
  static void Forget(const StreamReader& reader);

 private:
  struct Job;
  struct Planned {
    const StreamReader* mpReader;
    StreamReader::BlockExtent mExtent;
    std::size_t mFirstUse;  ///< Index of the first part that is in the block.
    std::size_t mLastUse;
    std::uint64_t mUnread;       ///< Bytes of the parts that were not read.
    bool mIsLeftOut = false;     ///< True if the block is read as usual.
    bool mNeedsCache = false;    ///< True if it was left out and the small cache cannot hold it.
    std::shared_ptr<Job> mpJob;  ///< Null before the start and after the end.
  };
  using Blocks = std::list<Planned>;
  using Key = std::pair<const StreamReader*, std::size_t>;

  Blocks::iterator AddAll(const Parts& parts);
  void Add(const Part& part, std::size_t use);
  Planned& FindOrAdd(const Part& part, const StreamReader::BlockExtent& extent, std::size_t use);
  void Plan(const Parts& parts);
  bool NeedsCache() const;
  void LeaveOutExcess(Blocks::iterator first);
  Planned* Find(const StreamReader& reader, std::size_t block);
  const unsigned char* GetContent(Planned& planned);
  bool StartNow(Planned& planned);
  void StartNext();
  bool StartIfItFits(Planned& planned);
  void DropPassed();
  bool Fits(const Planned& planned);
  void Start(Planned& planned);
  void Run(Job& job);
  static std::uint32_t Decompress(const Job& job, const Descriptor& file, unsigned char* stored,
                                  unsigned char* content);
  void LeaveOut(Planned& planned);

  static ReadAhead* spCurrent;

  ReadAhead* mpPrevious;
  std::uint64_t mMostMemory;
  std::uint64_t mMemory;  ///< Bytes that are used now; mMostMemory or kLeastMemory.
  std::uint64_t mCacheSize;
  std::size_t mMostStarted;  ///< Blocks that are started or kept at a time.
  Blocks mBlocks;            ///< Those of readers that exist, in the order of their first use.
  std::map<Key, Blocks::iterator> mPlaces;
  std::size_t mNumParts = 0;
  std::size_t mPosition = 0;  ///< The latest first use of the blocks that were read.
  Blocks::iterator mNext;     ///< The first block that was not started.
  std::vector<Planned*> mStarted;
  std::mutex mMutex;  ///< Guards the results of jobs.
  std::condition_variable mDone;
  std::shared_ptr<ChunkPool> mpBuffers;
  WorkerPool mWorkers;  ///< Last, because its tasks use the members above.
};

}  // namespace QovJbf
