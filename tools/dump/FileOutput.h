#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <utility>

#include "Output.h"

namespace Qov::Tools {

/// Raises MiscellaneousError if `path` is the file `input`, or a model or view-point file that
/// exists.
void RefuseToReplaceModel(const std::string& path, const std::string& input);

/// Writes lines to a file that is opened at the first write. Until then an existing file stays
/// unchanged.
class FileOutput : public Output {
 public:
  explicit FileOutput(std::string path) : Output(nullptr, {}), mPath(std::move(path)) {}

  bool IsOpen() const { return mFile != nullptr; }
  /// Writes buffered lines and closes the file. Creates it if nothing was written. Throws like
  /// Line.
  void Close();

 private:
  std::FILE* GetStream() override;

  std::string mPath;
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> mFile{nullptr, &std::fclose};
};

}  // namespace Qov::Tools
