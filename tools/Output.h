#pragma once

#include <cstdio>
#include <string_view>

#include "Terminal.h"

namespace Qov::Tools {

/// Thrown when the reader of the output has closed the pipe, which is not an error.
struct ClosedPipe {};

/// Writes lines of text to a stream, which the caller owns.
class Output {
 public:
  /// Handling of lines that cannot be written.
  enum class Loss { Thrown, Ignored };

  Output(std::FILE* stream, const TextStyle& style, Loss loss = Loss::Thrown)
      : mStream(stream), mStyle(style), mLoss(loss) {}
  virtual ~Output() = default;

  /// Writes the text and a newline. Throws ClosedPipe or raises WriteError, unless losses are
  /// ignored.
  void Line(std::string_view text = "");
  /// Writes bytes unchanged. Throws like Line.
  void Write(std::string_view bytes);
  /// Writes buffered bytes. Call it at the end, so that every failure is noticed. Throws like Line.
  void Flush();

  const TextStyle& GetStyle() const { return mStyle; }

 protected:
  /// Throws the error in errno, like Line.
  void HandleFailure() const;

 private:
  virtual std::FILE* GetStream() { return mStream; }

  std::FILE* mStream;
  TextStyle mStyle;
  Loss mLoss;
};

}  // namespace Qov::Tools
