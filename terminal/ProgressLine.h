#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <streambuf>
#include <string>

#include "Qov/Ryx/Progress.h"

/// One line that tells how far the writing of a model is, drawn over itself.
class ProgressLine : public QovRyx::ProgressListener {
 public:
  using Time = std::chrono::steady_clock::time_point;
  /// What time it is.
  using Clock = std::function<Time()>;
  /// Puts text on the terminal at once.
  using Draw = std::function<void(const std::string&)>;

  /// A line of fewer than `columns` characters.
  ProgressLine(Clock clock, Draw draw, std::size_t columns);

  void Start(std::uint64_t numBytes) override;
  void Advance(std::uint64_t numBytes) override;
  void Finish() override { Remove(); }

  /// Leaves the terminal as if there had been no line. It comes back with the next Advance that
  /// is due.
  void Remove();

 private:
  std::string MakeText(Time now) const;

  Clock mClock;
  Draw mDraw;
  std::size_t mColumns;
  std::uint64_t mAll = 0;
  std::uint64_t mDone = 0;
  Time mStart;
  Time mLastDrawn;
  std::size_t mShown = 0;  ///< Characters on the terminal now.
};

/// Passes text on to another buffer after the line made room for it.
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

/// Shows a ProgressLine on standard error while the object lives, if that is a terminal. What is
/// written to std::cerr meanwhile takes the place of the line.
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
