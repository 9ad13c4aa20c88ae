#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <streambuf>
#include <string>

#include "Qov/Ryx/Progress.h"
#include "StatusLine.h"

/// A line that shows the progress of writing a model.
class ProgressLine : public QovRyx::ProgressListener {
 public:
  using Time = std::chrono::steady_clock::time_point;
  /// Returns the time.
  using Clock = std::function<Time()>;
  using Draw = StatusLine::Draw;

  /// The line has fewer than `columns` characters.
  ProgressLine(Clock clock, Draw draw, std::size_t columns);

  void Start(std::uint64_t numBytes) override;
  void Advance(std::uint64_t numBytes) override;
  void Finish() override { Remove(); }

  /// Removes the line from the terminal. A later Advance draws it again.
  void Remove() { mLine.Remove(); }

 private:
  std::string MakeText(Time now) const;

  Clock mClock;
  StatusLine mLine;
  std::uint64_t mAll = 0;
  std::uint64_t mDone = 0;
  Time mStart;
  Time mLastDrawn;
};

/// Passes text to another buffer after it has removed the line.
class ProgressAwareBuffer : public std::streambuf {
 public:
  ProgressAwareBuffer(ProgressLine& line, std::streambuf* target) : mLine(line), mpTarget(target) {}
  std::streambuf* GetTarget() const { return mpTarget; }

 protected:
  int_type overflow(int_type character) override;
  std::streamsize xsputn(const char* text, std::streamsize size) override;
  int sync() override { return mpTarget->pubsync(); }

 private:
  ProgressLine& mLine;
  std::streambuf* mpTarget;
};

/// Shows a ProgressLine on standard error while the object exists, if standard error is a terminal.
/// Text that is written to std::cerr replaces the line.
class TerminalProgress {
 public:
  TerminalProgress();
  ~TerminalProgress();
  TerminalProgress(const TerminalProgress&) = delete;
  TerminalProgress& operator=(const TerminalProgress&) = delete;

 private:
  ProgressLine mLine;
  ProgressAwareBuffer mBuffer;
  bool mIsOn;
};
