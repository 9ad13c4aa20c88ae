#pragma once

#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <string>

#include "IndexTable.h"

namespace QovJbf {

class BlockChecks;
class BlockOutput;

/// Writes the blocks of a table to the file, without gaps and in the order of their items. The
/// position of a block follows from the sizes of all blocks before it, so a block cannot be written
/// before them.
class IndexWriter {
 public:
  explicit IndexWriter(IndexTable& table);
  ~IndexWriter();
  IndexWriter(const IndexWriter&) = delete;
  IndexWriter& operator=(const IndexWriter&) = delete;

  void SetExpectedLength(std::uint64_t length) { mExpectedLength = length; }
  void SetWriting(const WriteSettings& settings) { mSettings = settings; }
  void LimitThreads(unsigned most) { mMostThreads = most; }
  unsigned GetNumThreads() const { return mNumThreads; }
  /// Returns the blocks that are being compressed.
  BlockOutput& GetOutput();
  void StopWriting();

  void WriteBuffer(std::uint64_t k, std::FILE* file);
  void WriteIndexBuffer(std::uint64_t k, std::FILE* file);
  void WriteAllBuffers(std::FILE* file);
  void FlushFrozen(std::FILE* file);
  void PutStoredBlock(const std::string& name, StreamReader& reader,
                      const StreamReader::BlockExtent& block, bool check, std::FILE* file);
  void FinishChecks();

  /// Writes the bytes that are compressed and whose position is known.
  void WriteReady(std::FILE* file);
  /// Writes all blocks that were handed over. Waits for the threads.
  void WriteAllHandedOver(std::FILE* file);

 private:
  BlockChecks& GetChecks();
  void HandOver(std::uint64_t k);
  void HandOverFull(IndexStream& stream);
  void EndBlock(std::uint64_t k, std::FILE* file) const;
  std::uint64_t FindFirstOpen();

  IndexTable& mTable;
  std::uint64_t mFirstOpen = 0;           ///< The items before it are frozen or index blocks.
  std::unique_ptr<BlockOutput> mpOutput;  ///< Null until it is needed.
  std::unique_ptr<BlockChecks> mpChecks;  ///< Null until it is needed.
  WriteSettings mSettings;
  unsigned mMostThreads = std::numeric_limits<unsigned>::max();
  unsigned mNumThreads = 1;
  std::uint64_t mExpectedLength = 0;  ///< Number of bytes of the streamed blocks, 0 if unknown.
};

}  // namespace QovJbf
