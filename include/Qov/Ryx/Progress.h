#pragma once

#include <cstdint>

#include "Qov/Export.h"

namespace QovRyx {

/// Is told how long work goes: the writing of a model, or what a program reports of its own. All on
/// the thread that works. It must not throw.
class QOV_EXPORT ProgressListener {
 public:
  virtual ~ProgressListener() = default;

  /// Work on that many bytes begins; of a model that is written, those of its arrays.
  virtual void Start(std::uint64_t numBytes) = 0;
  /// That many bytes more are done; in writing, handed to compression.
  virtual void Advance(std::uint64_t numBytes) = 0;
  /// The work is done, or an error is on its way to the caller.
  virtual void Finish() = 0;
};

/// Who is told from now on; null for nobody, as at first. Returns who was told before. The
/// listener stays the caller's.
QOV_EXPORT ProgressListener* SetProgressListener(ProgressListener* listener);

/// Tells the listener of this process, if there is one, about work while the object lives.
class QOV_EXPORT ProgressReport {
 public:
  explicit ProgressReport(std::uint64_t numBytes);
  ~ProgressReport();
  ProgressReport(const ProgressReport&) = delete;
  ProgressReport& operator=(const ProgressReport&) = delete;

  static void Advance(std::uint64_t numBytes);
};

}  // namespace QovRyx
