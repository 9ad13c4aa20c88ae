#include "Qov/Jbf/JbFile.h"

#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <exception>
#include <utility>

#include "ContainerFormat.h"
#include "FileAccess.h"
#include "OutputFile.h"
#include "Qov/Log/Record.h"
#include "Qov/Util/Raise.h"
#include "SourceFile.h"
#include "Sources.h"
#include "diagnostics/Printable.h"

namespace QovJbf {

using Qov::Log::Trace;
using Qov::Util::Raise;
using Qov::Util::RaiseElementNotFound;
using Qov::Util::RaiseReadError;
using Qov::Util::RaiseWriteError;
using ErrorType = Qov::Util::Exception::ErrorType;

namespace {

void WriteNext(std::FILE* file, const void* data, std::size_t n) {
  if (std::fwrite(data, 1, n, file) != n) {
    RaiseWriteError(kJbFileSource);
  }
}

// Returns true for a folder. fopen opens folders for reading, but no byte can be read from them.
bool IsFolder(std::FILE* file) {
  struct stat status {};
  return fstat(fileno(file), &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

std::string ryx_file_version = kCurrentFileVersion;

JbFile::~JbFile() {
  try {
    mIndex.StopWriting();
  } catch (const std::exception&) {
    // Unwritten data is lost with the file.
  }
  if (mStream != nullptr) std::fclose(mStream);
}

std::FILE* JbFile::OpenFile(const std::string& path, const char* mode) {
  if (mStream != nullptr) {
    Raise(kJbFileSource, ErrorType::MiscellaneousError, "File stream is already in use");
  }
  mIsWritable = std::strpbrk(mode, "wa+") != nullptr;
  mStream = mIsWritable ? OpenOutput(path, mode) : OpenSharingHandles(path);
  if (mStream != nullptr && IsFolder(mStream)) {
    std::fclose(std::exchange(mStream, nullptr));
    errno = EISDIR;
  }
  if (mStream == nullptr) {
    Qov::Util::RaiseSystemFailure(kJbFileSource, ErrorType::MiscellaneousError,
                                  "Unable to open file " + Qov::Util::Quote(path), errno);
  }
  mPath = path;
  mpSource.reset();
  mIdentity.reset();
  if (!mIsWritable) mIdentity.emplace(path, mStream);
  return mStream;
}

void JbFile::CheckBeforeClosing() {
  if (mIdentity) {
    mIdentity->CheckUnchanged(mStream);
    return;
  }
  CheckStillAt(mPath, mStream);
  KeepOutputLock(mPath, mStream);
}

void JbFile::CloseFile() {
  Trace(kJbFileSource) << "Closing file ...";
  if (mStream == nullptr) return;
  mIndex.StopWriting();
  try {
    CheckBeforeClosing();
  } catch (...) {
    std::fclose(std::exchange(mStream, nullptr));
    throw;
  }
  const bool isClosed = std::fclose(std::exchange(mStream, nullptr)) == 0;
  if (!isClosed && mIsWritable) {
    RaiseWriteError(kJbFileSource);
  }
  Trace(kJbFileSource) << "File closed.";
}

bool JbFile::IsJbFile() {
  std::array<unsigned char, kMagic.size()> magic{};
  SeekToRead(kJbFileSource, mStream, 0);
  return std::fread(magic.data(), 1, magic.size(), mStream) == magic.size() && magic == kMagic;
}

std::string JbFile::ReadVersion() {
  std::array<char, kVersionSize + 1> text{};
  ReadAt(kJbFileSource, mStream, kVersionPosition, text.data(), kVersionSize);
  return text.data();
}

void JbFile::CheckSupport(const std::string& version, bool& isCurrent) {
  const std::uint32_t file = GetVersionNumber(version);
  const std::uint32_t supported = GetVersionNumber(kCurrentFileVersion);
  isCurrent = HasWideOffsets(version);
  if (file <= supported) return;
  Raise(kJbFileSource, ErrorType::UnknownVersion,
        "This file is of ryx file version " + std::to_string(file) +
            ".\nThis version of Pelorin only supports ryx file version upto " +
            std::to_string(supported) + ".\n");
}

void JbFile::WriteHeader() {
  std::array<char, kVersionSize> version{};
  std::snprintf(version.data(), version.size(), "%s", kCurrentFileVersion);
  if (mStream == nullptr || fseeko(mStream, 0, SEEK_SET) != 0) {
    RaiseWriteError(kJbFileSource);
  }
  WriteNext(mStream, kMagic.data(), kMagic.size());
  WriteNext(mStream, version.data(), version.size());
}

void JbFile::ReadIndex() {
  Trace(kJbFileSource) << "Reading index positions ... ";
  std::uint32_t length = 0;
  ReadAt(kJbFileSource, mStream, kRootPosition, &length, sizeof length);
  mIndex.ReadIndexBufferFromFileStream(mStream, length);
  Trace(kJbFileSource) << "Index read. ";
}

void JbFile::ReadIndexIfNeeded() {
  if (mStream != nullptr && mIndex.GetItems().empty()) ReadIndex();
}

Block& JbFile::GetReadingBlock(const std::string& name) {
  ReadIndexIfNeeded();
  if (mStream == nullptr) RaiseElementNotFound(kJbFileSource);
  return mIndex.GetBlock(mIndex.GetReadingBlockIndex(name, mStream));
}

void JbFile::RequireBytes(const std::string& name, void* target, std::uint32_t n) {
  GetReadingBlock(name).Get(target, n);
}

void JbFile::SetBlockPosition(const std::string& name, std::uint64_t position) {
  ReadIndexIfNeeded();
  mIndex.SetStreamPosition(name, position, mStream);
}

void JbFile::AddBlockTransformation(const std::string& name, std::uint8_t flags) {
  mIndex.AddFlags(name, flags);
}

void JbFile::CompressWhileFilling(const std::string& name, std::uint64_t expectedLength) {
  mIndex.StreamToFile(name, mStream, expectedLength);
}

bool JbFile::HasStream(const std::string& name) {
  ReadIndexIfNeeded();
  return mIndex.HasStream(name);
}

std::shared_ptr<StreamReader> JbFile::OpenStreamReader(const std::string& name) {
  if (mStream == nullptr) RaiseReadError(kJbFileSource);
  std::vector<StreamReader::StoredBlock> blocks;
  if (HasStream(name)) {
    for (const std::uint64_t k : mIndex.GetBlockSizeLimiter(name).mBlocks) {
      const IndexItem& item = mIndex.GetItems()[k];
      const bool isCompressed = (item.mFlags & BlockFlag::kCompressed) != 0;
      if (item.mSize > 0) blocks.push_back({mIndex.GetPosition(k), item.mSize, isCompressed});
    }
  }
  if (!mpSource) {
    mpSource = std::make_shared<SourceFile>(mIdentity ? *mIdentity : FileIdentity(mPath, mStream));
  }
  return std::make_shared<StreamReader>(mpSource, std::move(blocks));
}

}  // namespace QovJbf
