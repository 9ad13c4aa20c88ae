#include "Deflaters.h"

#include <zlib.h>

#include <algorithm>
#include <condition_variable>
#include <cstdio>
#include <deque>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace Qov::Bench {
namespace {

constexpr int kLevel = 6;
constexpr std::size_t kBuffer = std::size_t{256} * 1024;
constexpr std::uint64_t kSmallPiece = std::uint64_t{1024} * 1024;

using Bytes = std::vector<unsigned char>;

/// Writes zlib streams one after the other.
class Deflater {
 public:
  Deflater() { deflateInit(&mStream, kLevel); }
  ~Deflater() { deflateEnd(&mStream); }
  Deflater(const Deflater&) = delete;
  Deflater& operator=(const Deflater&) = delete;

  /// Calls `write(bytes, size)` for the output; `last` ends the stream.
  template <class Write>
  void Deflate(const unsigned char* bytes, std::size_t size, bool last, Write write) {
    mStream.next_in = const_cast<unsigned char*>(bytes);
    mStream.avail_in = static_cast<uInt>(size);
    do {
      mStream.next_out = mOut.data();
      mStream.avail_out = static_cast<uInt>(mOut.size());
      deflate(&mStream, last ? Z_FINISH : Z_NO_FLUSH);
      if (mStream.avail_out < mOut.size()) write(mOut.data(), mOut.size() - mStream.avail_out);
    } while (mStream.avail_out == 0);
    if (last) deflateReset(&mStream);
  }

 private:
  z_stream mStream{};
  Bytes mOut = Bytes(kBuffer);
};

class OutputFile {
 public:
  explicit OutputFile(const std::string& path) : mFile(std::fopen(path.c_str(), "wb")) {
    if (mFile == nullptr) throw std::runtime_error("cannot write " + path);
  }
  ~OutputFile() { std::fclose(mFile); }
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  void Write(const unsigned char* bytes, std::size_t size) {
    if (std::fwrite(bytes, 1, size, mFile) != size) throw std::runtime_error("short write");
  }

 private:
  std::FILE* mFile;
};

class OneThread : public Deflaters {
 public:
  explicit OneThread(const std::string& path) : mFile(path) {}

  void Add(const unsigned char* bytes, std::size_t size) override { Pass(bytes, size, false); }
  void EndPiece() override { Pass(nullptr, 0, true); }
  void Finish() override { EndPiece(); }

 private:
  void Pass(const unsigned char* bytes, std::size_t size, bool last) {
    mDeflater.Deflate(bytes, size, last,
                      [this](const unsigned char* out, std::size_t n) { mFile.Write(out, n); });
  }

  OutputFile mFile;
  Deflater mDeflater;
};

/// A piece of work. A thread deflates it while its bytes still arrive.
struct Piece {
  std::deque<Bytes> mArrived;
  bool mComplete = false;
  std::vector<Bytes> mDeflated;
  bool mDone = false;
};

/// Keeps buffers for reuse, because allocating new memory takes time.
class Buffers {
 public:
  Bytes Fill(const unsigned char* bytes, std::size_t size) {
    Bytes buffer = Take();
    buffer.assign(bytes, bytes + size);
    return buffer;
  }
  void Return(Bytes buffer) {
    const std::lock_guard lock(mMutex);
    mFree.push_back(std::move(buffer));
  }

 private:
  Bytes Take() {
    const std::lock_guard lock(mMutex);
    if (mFree.empty()) return {};
    Bytes buffer = std::move(mFree.back());
    mFree.pop_back();
    return buffer;
  }

  std::mutex mMutex;
  std::vector<Bytes> mFree;
};

class ManyThreads : public Deflaters {
 public:
  ManyThreads(std::size_t numThreads, const std::string& path) : mFile(path) {
    mPieces.push_back(std::make_shared<Piece>());
    for (std::size_t i = 0; i < numThreads; ++i) mThreads.emplace_back([this] { Work(); });
  }
  ~ManyThreads() override { Stop(); }

  void Add(const unsigned char* bytes, std::size_t size) override {
    Bytes buffer = mBuffers.Fill(bytes, size);
    std::unique_lock lock(mMutex);
    mPieces.back()->mArrived.push_back(std::move(buffer));
    mHeld += size;
    mChanged.notify_all();
    mChanged.wait(lock, [this] { return mHeld < kMostHeld; });
    WriteDone();
  }
  void EndPiece() override {
    const std::lock_guard lock(mMutex);
    mPieces.back()->mComplete = true;
    mPieces.push_back(std::make_shared<Piece>());
    mChanged.notify_all();
  }
  void Finish() override {
    EndPiece();
    Stop();
    WriteDone();
  }

 private:
  /// Large enough that no thread waits for bytes, whatever the block size.
  static constexpr std::size_t kMostHeld = std::size_t{512} * 1024 * 1024;

  void Stop() {
    if (mThreads.empty()) return;
    {
      const std::lock_guard lock(mMutex);
      mPieces.back()->mComplete = true;
      mStopped = true;
      mChanged.notify_all();
    }
    for (std::thread& thread : mThreads) thread.join();
    mThreads.clear();
  }

  void Work() {
    Deflater deflater;
    while (const std::shared_ptr<Piece> piece = TakePiece()) DeflatePiece(*piece, deflater);
  }

  std::shared_ptr<Piece> TakePiece() {
    std::unique_lock lock(mMutex);
    mChanged.wait(lock, [this] { return mTaken < mPieces.size() || mStopped; });
    return mTaken < mPieces.size() ? mPieces[mTaken++] : nullptr;
  }

  void DeflatePiece(Piece& piece, Deflater& deflater) {
    const auto keep = [this, &piece](const unsigned char* bytes, std::size_t size) {
      piece.mDeflated.push_back(mBuffers.Fill(bytes, size));
    };
    for (Bytes bytes = Next(piece); !bytes.empty(); bytes = Next(piece)) {
      deflater.Deflate(bytes.data(), bytes.size(), false, keep);
      mBuffers.Return(std::move(bytes));
    }
    deflater.Deflate(nullptr, 0, true, keep);
    const std::lock_guard lock(mMutex);
    piece.mDone = true;
  }

  /// Returns the next bytes of the piece, or nothing at its end.
  Bytes Next(Piece& piece) {
    std::unique_lock lock(mMutex);
    mChanged.wait(lock, [&piece] { return !piece.mArrived.empty() || piece.mComplete; });
    if (piece.mArrived.empty()) return {};
    Bytes bytes = std::move(piece.mArrived.front());
    piece.mArrived.pop_front();
    mHeld -= bytes.size();
    mChanged.notify_all();
    return bytes;
  }

  void WriteDone() {
    for (; mWritten < mTaken && mPieces[mWritten]->mDone; ++mWritten) {
      for (Bytes& bytes : mPieces[mWritten]->mDeflated) {
        mFile.Write(bytes.data(), bytes.size());
        mBuffers.Return(std::move(bytes));
      }
      mPieces[mWritten].reset();
    }
  }

  OutputFile mFile;
  Buffers mBuffers;
  std::mutex mMutex;
  std::condition_variable mChanged;
  std::vector<std::shared_ptr<Piece>> mPieces;
  std::size_t mTaken = 0;
  std::size_t mWritten = 0;
  std::size_t mHeld = 0;
  bool mStopped = false;
  std::vector<std::thread> mThreads;
};

}  // namespace

std::unique_ptr<Deflaters> MakeDeflaters(std::size_t numThreads, const std::string& outputPath) {
  if (numThreads <= 1) return std::make_unique<OneThread>(outputPath);
  return std::make_unique<ManyThreads>(numThreads, outputPath);
}

BlockCutter::BlockCutter(std::vector<std::uint64_t> lengths, bool wholeBlocks)
    : mLengths(std::move(lengths)), mWholeBlocks(wholeBlocks) {
  if (mLengths.empty() || std::count(mLengths.begin(), mLengths.end(), 0U) != 0) {
    throw std::runtime_error("blocks must have a length");
  }
  BeginBlock();
}

void BlockCutter::BeginBlock() {
  mLeft = mLengths[std::min(mNextBlock++, mLengths.size() - 1)];
  if (!mWholeBlocks) mLeft = std::min(mLeft, kSmallPiece);
}

void BlockCutter::Cut(const unsigned char* bytes, std::size_t size, Deflaters& deflaters) {
  while (size > 0) {
    const std::size_t n = std::min<std::uint64_t>(size, mLeft);
    deflaters.Add(bytes, n);
    bytes += n;
    size -= n;
    mLeft -= n;
    if (mLeft > 0) continue;
    deflaters.EndPiece();
    BeginBlock();
  }
}

}  // namespace Qov::Bench
