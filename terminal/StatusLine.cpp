#include "StatusLine.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <utility>

StatusLine::StatusLine(Draw draw, std::size_t columns)
    : mDraw(std::move(draw)), mColumns(columns) {}

void StatusLine::Show(const std::string& text) {
  const std::string line = text.substr(0, mColumns > 0 ? mColumns - 1 : 0);
  const std::size_t leftOver = mShown > line.size() ? mShown - line.size() : 0;
  mDraw("\r" + line + std::string(leftOver, ' ') + std::string(leftOver, '\b'));
  mShown = line.size();
}

void StatusLine::Remove() {
  if (mShown == 0) return;
  mDraw("\r" + std::string(mShown, ' ') + "\r");
  mShown = 0;
}

void StatusLine::DrawOnTerminal(const std::string& text) {
  // A failure to write to the terminal does not stop a merge.
  static_cast<void>(::write(STDERR_FILENO, text.data(), text.size()) < 0);
}

std::size_t StatusLine::CountColumns() {
  constexpr std::size_t kDefault = 80;
  winsize size{};
  const bool isKnown = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return isKnown ? size.ws_col : kDefault;
}
