#pragma once

#include <cstddef>
#include <functional>
#include <string>

/// A line of a terminal that is drawn again and again at the same place.
class StatusLine {
 public:
  /// Writes text to the terminal without buffering.
  using Draw = std::function<void(const std::string&)>;

  /// The line has fewer than `columns` characters.
  StatusLine(Draw draw, std::size_t columns);

  /// Replaces the line. A text that is too long is cut.
  void Show(const std::string& text);
  /// Removes the line from the terminal. A later Show draws it again.
  void Remove();

  /// Writes to standard error. Errors are ignored.
  static void DrawOnTerminal(const std::string& text);
  /// Returns the columns of the terminal at standard error, or 80 if they are not known.
  static std::size_t CountColumns();

 private:
  Draw mDraw;
  std::size_t mColumns;
  std::size_t mShown = 0;  ///< Number of characters on the terminal.
};
