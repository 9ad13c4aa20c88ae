#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Qov::Bench {

/// Deflates each piece of work as one zlib stream and writes the streams in order.
class Deflaters {
 public:
  virtual ~Deflaters() = default;
  /// Adds bytes to the current piece of work. Copies them if they are needed after the call.
  virtual void Add(const unsigned char* bytes, std::size_t size) = 0;
  /// Ends the current piece of work; the next bytes begin another one.
  virtual void EndPiece() = 0;
  /// Waits until all pieces are written.
  virtual void Finish() = 0;
};

/// Returns deflaters with so many threads; for one thread, the calling thread deflates.
std::unique_ptr<Deflaters> MakeDeflaters(std::size_t numThreads, const std::string& outputPath);

/// Cuts a stream into pieces of work.
class BlockCutter {
 public:
  /// Cuts at the given block lengths; the last length applies to all further blocks. Without
  /// `wholeBlocks`, a piece has at most 1 MiB.
  BlockCutter(std::vector<std::uint64_t> lengths, bool wholeBlocks);
  void Cut(const unsigned char* bytes, std::size_t size, Deflaters& deflaters);

 private:
  void BeginBlock();

  std::vector<std::uint64_t> mLengths;
  bool mWholeBlocks;
  std::size_t mNextBlock = 0;
  std::uint64_t mLeft = 0;
};

}  // namespace Qov::Bench
