#pragma once

#include <string>
#include <vector>

#include "picture/PictureRequest.h"

namespace CLI {
class App;
}

namespace Qov::Tools {

/// The options of a command that draws a model.
class PictureOptions {
 public:
  /// Declares them. Parsing stores their values in this object.
  void Declare(CLI::App& app);

  /// Returns the request that they describe. Raises InvalidEnumeration for a value that cannot be
  /// read, and OutOfBounds for a size that is too small or too large.
  PictureRequest MakeRequest() const;
  bool HasSize() const { return !mSize.empty(); }

 private:
  PictureRequest mRequest;
  std::string mComponent = "magnitude";
  std::string mScale = "auto";
  std::string mRange;
  std::string mSize;
  std::string mBackground;
  bool mFlat = false;
};

/// Returns the text in small ASCII letters.
std::string Lower(std::string text);

}  // namespace Qov::Tools
