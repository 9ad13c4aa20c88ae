#include "InputProgress.h"

#include <fmt/format.h>
#include <unistd.h>

namespace Qov::Tools {

InputProgress::InputProgress(std::size_t numInputs)
    : mNumInputs(numInputs),
      mIsOn(::isatty(STDERR_FILENO) == 1),
      mLine(&StatusLine::DrawOnTerminal, StatusLine::CountColumns()),
      mLastDrawn(Clock::now()),
      mpNext(QovRyx::SetProgressListener(this)) {}

InputProgress::~InputProgress() {
  mLine.Remove();
  QovRyx::SetProgressListener(mpNext);
}

void InputProgress::ShowInput(std::size_t number) {
  constexpr auto kDrawingInterval = std::chrono::milliseconds(200);
  if (!mIsOn || Clock::now() - mLastDrawn < kDrawingInterval) return;
  mLastDrawn = Clock::now();
  mLine.Show(fmt::format("reading input {} of {}", number + 1, mNumInputs));
}

void InputProgress::Start(std::uint64_t numBytes) {
  mLine.Remove();
  if (mpNext != nullptr) mpNext->Start(numBytes);
}

void InputProgress::Advance(std::uint64_t numBytes) {
  if (mpNext != nullptr) mpNext->Advance(numBytes);
}

void InputProgress::Finish() {
  if (mpNext != nullptr) mpNext->Finish();
}

}  // namespace Qov::Tools
