#include "Qov/Jbf/Index.h"

#include <utility>

#include "BlockFiller.h"
#include "IndexReader.h"
#include "IndexTable.h"
#include "IndexWriter.h"

namespace QovJbf {

struct Index::State {
  State() = default;
  explicit State(IndexTable table) : mTable(std::move(table)) {}

  /// Writes all blocks that were handed over, so that they can be read.
  void FinishWriting(std::FILE* file) {
    if (file != nullptr) mWriter.WriteAllHandedOver(file);
  }

  IndexTable mTable;
  IndexReader mReader{mTable};
  IndexWriter mWriter{mTable};
  BlockFiller mFiller{mTable, mWriter};
};

Index::Index() : mpState(std::make_unique<State>()) {}
Index::~Index() = default;
Index::Index(Index&&) noexcept = default;
Index& Index::operator=(Index&&) noexcept = default;

std::uint64_t Index::CreateBlock(const std::string& name) {
  return mpState->mTable.CreateBlock(name);
}

std::uint64_t Index::CreateEmptyBlocks(std::uint64_t n) {
  return mpState->mTable.CreateEmptyBlocks(n);
}

std::uint64_t Index::GetWritingBlockIndex(const std::string& name) {
  return mpState->mFiller.GetWritingBlockIndex(name);
}

std::uint64_t Index::GetReadingBlockIndex(const std::string& name) {
  return mpState->mReader.GetReadingBlockIndex(name);
}

std::uint64_t Index::GetReadingBlockIndex(const std::string& name, std::FILE* file) {
  mpState->FinishWriting(file);
  return mpState->mReader.GetReadingBlockIndex(name, file);
}

BlockSizeLimiter& Index::GetBlockSizeLimiter(const std::string& name) {
  return mpState->mTable.GetStream(name);
}

bool Index::HasStream(const std::string& name) const { return mpState->mTable.HasStream(name); }

void Index::Put(const std::string& name, const void* source, std::uint64_t n) {
  mpState->mFiller.Put(name, source, n);
}

void Index::Put(const std::string& name, std::uint64_t n, const PieceSource& source) {
  mpState->mFiller.Put(name, n, source);
}

void Index::PutStoredBlock(const std::string& name, StreamReader& reader,
                           const StreamReader::BlockExtent& block, bool check, std::FILE* file) {
  mpState->mWriter.PutStoredBlock(name, reader, block, check, file);
}

void Index::FinishChecks() { mpState->mWriter.FinishChecks(); }

void Index::Get(const std::string& name, void* target, std::uint64_t n) {
  mpState->mReader.Get(name, target, n);
}

void Index::Get(const std::string& name, void* target, std::uint64_t n, std::FILE* file) {
  mpState->FinishWriting(file);
  mpState->mReader.Get(name, target, n, file);
}

std::uint64_t Index::GetStreamLength(const std::string& name) const {
  return mpState->mTable.GetStreamLength(name);
}

void Index::AddFlags(const std::string& name, std::uint8_t flags) {
  mpState->mTable.AddFlags(name, flags);
}

void Index::SetStreamPosition(const std::string& name, std::uint64_t offset, std::FILE* file) {
  mpState->FinishWriting(file);
  mpState->mReader.SetStreamPosition(name, offset, file);
}

void Index::StreamToFile(const std::string& name, std::FILE* file, std::uint64_t expectedLength) {
  mpState->mFiller.StreamToFile(name, file);
  mpState->mWriter.SetExpectedLength(expectedLength);
}

void Index::StopWriting() {
  mpState->mWriter.StopWriting();
  mpState->mFiller.StopWriting();
}

void Index::SetWriting(const WriteSettings& settings) {
  mpState->mTable.SetBlockLimit(settings.mBlockLimit, settings.mUsualBlockLimit);
  mpState->mWriter.SetWriting(settings);
}

void Index::LimitThreads(unsigned most) { mpState->mWriter.LimitThreads(most); }

unsigned Index::GetNumThreads() const { return mpState->mWriter.GetNumThreads(); }

void Index::WriteBufferToFileStream(std::uint64_t k, std::FILE* file) {
  mpState->mWriter.WriteBuffer(k, file);
}

void Index::WriteIndexBufferToFileStream(std::uint64_t k, std::FILE* file) {
  mpState->mWriter.WriteIndexBuffer(k, file);
}

void Index::WriteAllBuffersToFileStream(std::FILE* file) { mpState->mWriter.WriteAllBuffers(file); }

void Index::FlushFrozen(std::FILE* file) { mpState->mWriter.FlushFrozen(file); }

void Index::ReadIndexBufferFromFileStream(std::FILE* file, std::uint32_t length) {
  mpState = std::make_unique<State>(IndexReader::ReadTable(file, length));
}

const std::vector<IndexItem>& Index::GetItems() const { return mpState->mTable.GetItems(); }

const Block& Index::GetBlock(std::uint64_t k) const { return mpState->mTable.GetBlock(k); }

Block& Index::GetBlock(std::uint64_t k) { return mpState->mTable.GetBlock(k); }

bool Index::IsFrozen(std::uint64_t k) const { return mpState->mTable.GetState(k).mFrozen; }

std::uint64_t Index::GetPosition(std::uint64_t k) { return mpState->mTable.GetPosition(k); }

std::uint64_t Index::GetOpenBlock(const std::string& name) {
  return mpState->mFiller.GetOpenBlock(name);
}

void Index::FinishValue(std::uint64_t k) { mpState->mFiller.FinishValue(k); }

}  // namespace QovJbf
