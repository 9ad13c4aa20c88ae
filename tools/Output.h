#pragma once

#include <cstdio>
#include <string_view>

#include "Terminal.h"

namespace Qov::Tools {

/// Thrown when whoever read the output has gone: there is nothing left to do, and no error.
struct ClosedPipe {};

/// Lines of text for a stream that stays the caller's.
class Output {
 public:
  /// What becomes of lines that cannot be written.
  enum class Loss { Thrown, Ignored };

  Output(std::FILE* stream, const TextStyle& style, Loss loss = Loss::Thrown)
      : mStream(stream), mStyle(style), mLoss(loss) {}
  virtual ~Output() = default;

  /// Writes the text and a newline. Throws ClosedPipe, or raises WriteError, unless that is to be
  /// ignored.
  void Line(std::string_view text = "");
  /// Writes bytes as they are; throws as Line does.
  void Write(std::string_view bytes);
  /// To be called at the end, so that no failure to write goes unnoticed. Throws as Line does.
  void Flush();

  const TextStyle& GetStyle() const { return mStyle; }

 protected:
  /// Throws what errno says of a failure to write, as Line does.
  void HandleFailure() const;

 private:
  virtual std::FILE* GetStream() { return mStream; }

  std::FILE* mStream;
  TextStyle mStyle;
  Loss mLoss;
};

}  // namespace Qov::Tools
