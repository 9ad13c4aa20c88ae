#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Descriptor.h"

namespace QovJbf {

struct SignalRemoval;

/// A file that appears under its name only when it is complete. It is written beside that name, as
/// ".NAME.XXXXXX", and removed if it is not committed, also by the signals of
/// RemoveOutputsOnSignals (SignalRemovals.h).
///
/// - A symbolic link is followed: the file that it names is made or replaced, and the link stays.
/// - Only regular files are replaced. A folder, device or pipe raises WriteError, because it cannot
///   be replaced by a complete file, and a container is not written from start to end.
/// - A new file gets the permissions of any new file. A replaced file keeps its permissions and, if
///   the process may set it, its owner; other hard links to it keep the old content.
/// - A file that must be replaced is locked until the new one is flushed, so that no other run
///   writes it.
class TemporaryOutput {
 public:
  /// Makes the temporary file, which is empty. Raises ElementExists if `path` exists and
  /// `overwrite` is false, MiscellaneousError if another run writes the file, and WriteError if
  /// the file cannot be made or replaced.
  TemporaryOutput(std::string path, bool overwrite);
  ~TemporaryOutput();
  TemporaryOutput(const TemporaryOutput&) = delete;
  TemporaryOutput& operator=(const TemporaryOutput&) = delete;

  const std::string& GetPath() const { return mPath; }
  /// Returns the path at which the file is written. It may be opened any number of times.
  const std::string& GetTemporaryPath() const { return mTemporaryPath; }
  /// Returns a descriptor for reading and writing, which belongs to this object. Flush closes it.
  int GetDescriptor() const { return mFile->Get(); }

  /// Flushes the file to the disk and closes it. Raises WriteError. After that, the object needs no
  /// descriptors, so that there can be any number of complete files without a name.
  void Flush();
  /// Flushes the file, if that was not done, and its folder, and gives the file its name. All of it
  /// must have been written to the descriptor or the path. Raises ElementExists if `overwrite` was
  /// false and another program has made a file of that name, and WriteError. After an error the
  /// output is as before, unless only the folder could not be flushed.
  void Commit();

 private:
  void LockReplaced(const struct stat& status);
  void MakeTemporaryFile();
  void SetFinalMode() const;
  void Rename();
  void FlushFolder() const;
  [[noreturn]] void RaiseExists() const;
  [[noreturn]] void RaiseWriteError(int error) const;

  /// The locked file that is replaced.
  struct Replaced {
    Replaced(Descriptor file, uid_t user, gid_t group, mode_t mode)
        : mFile(std::move(file)), mUser(user), mGroup(group), mMode(mode) {}

    Descriptor mFile;
    uid_t mUser;
    gid_t mGroup;
    mode_t mMode;
  };

  const std::string mPath;
  const std::string mTarget;  ///< mPath without symbolic links at its end.
  const bool mOverwrite;
  std::optional<Replaced> mReplaced;
  std::string mTemporaryPath;
  std::optional<Descriptor> mFile;
  mode_t mMode = 0;                    ///< The permissions at the end.
  struct stat mWritten {};             ///< The flushed file.
  SignalRemoval* mpRemoval = nullptr;  ///< Null after the end.
};

/// Raises MiscellaneousError if `output` is the same file as one of the inputs.
void CheckIsNotAnInput(const std::string& output, const std::vector<std::string>& inputs);

/// Raises WriteError if the file system of `output` has less room than `numBytes`. Nothing is
/// checked if its free space is not known. The space of an older output does not count, because it
/// is not free before the end.
void CheckRoom(const std::string& output, std::uint64_t numBytes);

}  // namespace QovJbf
