#pragma once

#include <chrono>
#include <cstddef>

#include "Qov/Ryx/Progress.h"
#include "StatusLine.h"

namespace Qov::Tools {

/// Shows the number of the input that is read, if standard error is a terminal. While it exists, it
/// precedes the progress listener of the process, so that its line is removed before theirs is
/// drawn.
class InputProgress : public QovRyx::ProgressListener {
 public:
  explicit InputProgress(std::size_t numInputs);
  ~InputProgress() override;
  InputProgress(const InputProgress&) = delete;
  InputProgress& operator=(const InputProgress&) = delete;

  /// Shows that input `number`, from 0, is about to be read.
  void ShowInput(std::size_t number);

  void Start(std::uint64_t numBytes) override;
  void Advance(std::uint64_t numBytes) override;
  void Finish() override;

 private:
  using Clock = std::chrono::steady_clock;

  std::size_t mNumInputs;
  bool mIsOn;
  StatusLine mLine;
  Clock::time_point mLastDrawn;
  QovRyx::ProgressListener* mpNext;
};

}  // namespace Qov::Tools
