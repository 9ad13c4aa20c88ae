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

/// The container version whose rules apply to the records that are read. It is "1.3", except while
/// the view points of an older file are read.
QOV_EXPORT extern std::string ryx_file_version;
/// The container version that this program writes.
inline constexpr const char* kCurrentFileVersion = "1.3";

/// An open container file and its index. docs/format.md describes the format.
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

  /// Opens a file with mode "wb+", "rb+" or "rb". Raises MiscellaneousError if the file cannot be
  /// opened, or if another process or object has it open for writing. The file is not truncated
  /// then. The handle belongs to this object.
  std::FILE* OpenFile(const std::string& path, const char* mode);
  /// Closes the file. Raises WriteError if an output could not be written completely, or if its
  /// path does not lead to it any more. Raises ReadError if an input has changed since it was
  /// opened.
  virtual void CloseFile();

  /// Returns true if the file begins with the magic bytes of a container.
  bool IsJbFile();
  /// Returns the version, at most 4 characters.
  std::string ReadVersion();
  /// Raises UnknownVersion if the version is newer than kCurrentFileVersion. Sets `isCurrent` to
  /// true if tree records of the version hold 64-bit offsets (0.7 and later).
  static void CheckSupport(const std::string& version, bool& isCurrent);
  /// Writes the magic bytes and the current version.
  void WriteHeader();
  /// Reads the index. Raises ReadError if the file is too short and OutOfBounds if the index is
  /// invalid. The index is as before then.
  void ReadIndex();

  /// Reads one value. Leaves it as it is if the stream does not exist or no file is open.
  template <class T>
  void Get(const std::string& name, T& value) {
    if (mStream == nullptr) return;
    try {
      Require(name, value);
    } catch (const Qov::Util::Exception& error) {
      if (error.GetType() != Qov::Util::Exception::ErrorType::ElementNotFound) throw;
    }
  }
  /// Reads one value. Raises ElementNotFound if the stream does not exist.
  template <class T>
  void Require(const std::string& name, T& value) {
    CopyFromBlock(GetReadingBlock(name), value);
  }
  /// Reads raw bytes. Raises ElementNotFound if the stream does not exist.
  void RequireBytes(const std::string& name, void* target, std::uint32_t n);

  /// Sets the reading position of `name` to byte `position` of its uncompressed bytes.
  void SetBlockPosition(const std::string& name, std::uint64_t position);
  /// Sets BlockFlag bits on all present blocks of `name`.
  void AddBlockTransformation(const std::string& name, std::uint8_t flags);
  /// Compresses new blocks of `name` while they fill and writes them to the file, which must be
  /// open for writing. This takes little memory. `expectedLength` is the number of bytes to come, 0
  /// if it is not known.
  void CompressWhileFilling(const std::string& name, std::uint64_t expectedLength = 0);

  /// Returns a reader of `name`, which can outlive this object. Its length is 0 if the stream does
  /// not exist. Raises ReadError if no file is open.
  std::shared_ptr<StreamReader> OpenStreamReader(const std::string& name);

  bool HasStream(const std::string& name);
  Index& GetIndex() { return mIndex; }
  std::FILE* GetStream() const { return mStream; }
  const std::string& GetPath() const { return mPath; }
  /// Returns the identity that the input had when it was opened, or nothing for an output.
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
