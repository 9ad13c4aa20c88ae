#pragma once

#include <cstdint>

#include "Qov/Export.h"

namespace QovRyx {

/// Receives the progress of a task and can cancel it. Tasks are the saving of a model, the search
/// for equal arrays, and tasks of the program. Called on the thread of the task. The functions must
/// not throw.
class QOV_EXPORT ProgressListener {
 public:
  virtual ~ProgressListener() = default;

  /// A task on `numBytes` bytes begins. Saving a model counts the bytes of its arrays.
  virtual void Start(std::uint64_t numBytes) = 0;
  /// `numBytes` more bytes are done. Saving counts bytes when they are passed to compression.
  virtual void Advance(std::uint64_t numBytes) = 0;
  /// The task has ended, with or without an error.
  virtual void Finish() = 0;
  /// Returns true to cancel the task. Called after each Advance.
  virtual bool IsCancelled() const { return false; }
};

/// Installs the listener of this process; null, the default, removes it. Returns the previous one.
/// The caller owns the listener.
QOV_EXPORT ProgressListener* SetProgressListener(ProgressListener* listener);

/// A task that is reported to the listener, if there is one. It begins and ends with the object.
class QOV_EXPORT ProgressReport {
 public:
  explicit ProgressReport(std::uint64_t numBytes);
  ~ProgressReport();
  ProgressReport(const ProgressReport&) = delete;
  ProgressReport& operator=(const ProgressReport&) = delete;

  /// Adds to the progress of the current task. Raises MiscellaneousError if the listener cancels
  /// it.
  static void Advance(std::uint64_t numBytes);
};

}  // namespace QovRyx
