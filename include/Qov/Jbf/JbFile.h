#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "Qov/Export.h"
#include "Qov/Jbf/FileIdentity.h"
#include "Qov/Jbf/Index.h"
#include "Qov/Jbf/StreamReader.h"
#include "Qov/Util/Exception.h"

namespace QovJbf {

/// The container version whose rules hold for the records being read. "1.3", except while a
/// loader reads the view points of an older file.
QOV_EXPORT extern std::string ryx_file_version;
/// The container version that this program writes.
inline constexpr const char* kCurrentFileVersion = "1.3";

/// One open container file: a stream of bytes and its index.
///
///   offset 0      8 bytes   0x89 "JBF" 0x0D 0x0A 0x1A 0x0A
///   offset 8      4 bytes   version text, zero-terminated
///   offset 12     u32 L     length of the root index, 2784
///   offset 16     L bytes   root index: u32 20, then 20 items
///   offset 16+L   ...       the blocks, back to back, in the order of their items
///
/// To write: OpenFile("wb+"), WriteHeader, GetIndex().Put...,
/// GetIndex().WriteAllBuffersToFileStream(GetStream()), CloseFile.
/// To read: OpenFile("rb"), IsJbFile, ReadVersion, CheckSupport, ReadIndex, then Get or Require.
class QOV_EXPORT JbFile {
 public:
  JbFile() = default;
  virtual ~JbFile();
  JbFile(const JbFile&) = delete;
  JbFile& operator=(const JbFile&) = delete;

  /// Modes "wb+", "rb+" and "rb". Raises MiscellaneousError, also for an output that another
  /// process or object has open for writing; nothing is truncated then. The handle stays this
  /// object's and is closed with it.
  std::FILE* OpenFile(const std::string& path, const char* mode);
  /// Closes the file. Raises WriteError for an output that could not be written to its end or that
  /// its path no longer leads to, and ReadError for an input that changed since it was opened.
  virtual void CloseFile();

  /// Whether the file begins with the magic.
  bool IsJbFile();
  /// The version text at offset 8, at most 4 characters.
  std::string ReadVersion();
  /// Raises UnknownVersion for a version newer than ours. `isCurrent` tells whether the file
  /// stores 64-bit light-data offsets (0.7 and later).
  static void CheckSupport(const std::string& version, bool& isCurrent);
  /// Magic and current version.
  void WriteHeader();
  /// Raises ReadError for a file that ends early and OutOfBounds for an index that makes no sense;
  /// the index is as before then.
  void ReadIndex();

  /// Reads one value; leaves it as it is when the stream is absent or no file is open.
  template <class T>
  void Get(const std::string& name, T& value) {
    if (mStream == nullptr) return;
    try {
      Require(name, value);
    } catch (const Qov::Util::Exception& error) {
      if (error.GetType() != Qov::Util::Exception::ErrorType::ElementNotFound) throw;
    }
  }
  /// Reads one value; raises ElementNotFound when the stream is absent.
  template <class T>
  void Require(const std::string& name, T& value) {
    CopyFromBlock(GetReadingBlock(name), value);
  }
  /// Raw bytes; an absent stream raises ElementNotFound.
  void RequireBytes(const std::string& name, void* target, std::uint32_t n);

  /// Puts reading of `name` at byte `position` of its uncompressed bytes.
  void SetBlockPosition(const std::string& name, std::uint64_t position);
  /// Sets BlockFlag bits on all blocks that `name` has now.
  void AddBlockTransformation(const std::string& name, std::uint8_t flags);
  /// Lets new blocks of `name` go to the file while they fill, which keeps little of them in
  /// memory. The file must be open for writing. It helps to know how many bytes will come.
  void CompressWhileFilling(const std::string& name, std::uint64_t expectedLength = 0);

  /// A reader of `name` that outlives this object; an absent stream gives one of length 0.
  /// Raises ReadError when no file is open.
  std::shared_ptr<StreamReader> OpenStreamReader(const std::string& name);

  bool HasStream(const std::string& name);
  Index& GetIndex() { return mIndex; }
  std::FILE* GetStream() const { return mStream; }
  const std::string& GetPath() const { return mPath; }
  /// Returns the identity that the input had when it was opened; nothing for an output.
  const std::optional<FileIdentity>& GetIdentity() const { return mIdentity; }

 private:
  void CheckBeforeClosing();
  void ReadIndexIfNeeded();
  Block& GetReadingBlock(const std::string& name);

  std::string mPath;
  std::FILE* mStream = nullptr;
  bool mIsWritable = false;
  std::optional<FileIdentity> mIdentity;
  std::shared_ptr<SourceFile> mpSource;
  Index mIndex;
};

}  // namespace QovJbf
