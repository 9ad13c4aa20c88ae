#include "ProgressLine.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <utility>

namespace {

using Seconds = std::chrono::duration<double>;

constexpr auto kDrawingInterval = std::chrono::milliseconds(200);
constexpr double kMegabyte = 1e6;

double InMegabytes(std::uint64_t numBytes) { return static_cast<double>(numBytes) / kMegabyte; }

/// Returns "1:02:03", or "2:03" for less than an hour.
std::string FormatDuration(double duration) {
  constexpr double kLongest = 359999;
  const auto seconds = static_cast<int>(std::lround(std::min(duration, kLongest)));
  std::array<char, 32> text{};
  if (seconds >= 3600) {
    std::snprintf(text.data(), text.size(), "%d:%02d:%02d", seconds / 3600, seconds / 60 % 60,
                  seconds % 60);
  } else {
    std::snprintf(text.data(), text.size(), "%d:%02d", seconds / 60, seconds % 60);
  }
  return text.data();
}

}  // namespace

ProgressLine::ProgressLine(Clock clock, Draw draw, std::size_t columns)
    : mClock(std::move(clock)), mLine(std::move(draw), columns) {}

void ProgressLine::Start(std::uint64_t numBytes) {
  Remove();
  mAll = numBytes;
  mDone = 0;
  mStart = mLastDrawn = mClock();
}

void ProgressLine::Advance(std::uint64_t numBytes) {
  mDone += numBytes;
  const Time now = mClock();
  if (now - mLastDrawn < kDrawingInterval) return;
  mLastDrawn = now;
  mLine.Show(MakeText(now));
}

std::string ProgressLine::MakeText(Time now) const {
  const double rate = static_cast<double>(mDone) / Seconds(now - mStart).count();
  const std::uint64_t left = mAll > mDone ? mAll - mDone : 0;
  std::array<char, 128> text{};
  std::snprintf(text.data(), text.size(), "%.0f of %.0f MB, %.0f MB/s, ", InMegabytes(mDone),
                InMegabytes(mAll), rate / kMegabyte);
  std::string line = text.data();
  line += left == 0 ? "finishing" : FormatDuration(static_cast<double>(left) / rate) + " left";
  return line;
}

TerminalProgress::TerminalProgress()
    : mLine(&std::chrono::steady_clock::now, &StatusLine::DrawOnTerminal,
            StatusLine::CountColumns()),
      mBuffer(mLine, std::cerr.rdbuf()),
      mIsOn(::isatty(STDERR_FILENO) == 1) {
  if (!mIsOn) return;
  std::cerr.rdbuf(&mBuffer);
  QovRyx::SetProgressListener(&mLine);
}

TerminalProgress::~TerminalProgress() {
  if (!mIsOn) return;
  QovRyx::SetProgressListener(nullptr);
  mLine.Remove();
  std::cerr.rdbuf(mBuffer.GetTarget());
}

ProgressAwareBuffer::int_type ProgressAwareBuffer::overflow(int_type character) {
  mLine.Remove();
  if (traits_type::eq_int_type(character, traits_type::eof()))
    return traits_type::not_eof(character);
  return mpTarget->sputc(traits_type::to_char_type(character));
}

std::streamsize ProgressAwareBuffer::xsputn(const char* text, std::streamsize size) {
  mLine.Remove();
  return mpTarget->sputn(text, size);
}
