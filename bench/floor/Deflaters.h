#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Qov::Bench {

/// Deflates pieces of work, each a zlib stream of its own, and writes them in their order.
class Deflaters {
 public:
  virtual ~Deflaters() = default;
  /// More bytes of the current piece of work. They are copied if they have to be kept.
  virtual void Add(const unsigned char* bytes, std::size_t size) = 0;
  /// The current piece of work is complete; the next bytes begin another one.
  virtual void EndPiece() = 0;
  /// Waits until all is written.
  virtual void Finish() = 0;
};

/// With one thread the calling thread deflates.
std::unique_ptr<Deflaters> MakeDeflaters(std::size_t numThreads, const std::string& outputPath);

/// Cuts a stream into pieces of work.
class BlockCutter {
 public:
  /// Blocks of the given lengths, the last of which holds for all further ones; unless
  /// `wholeBlocks`, every megabyte is a piece.
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
