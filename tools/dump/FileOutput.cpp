#include "dump/FileOutput.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "Qov/Jbf/JbFile.h"
#include "Qov/Util/Raise.h"

namespace Qov::Tools {
namespace {

/// Returns true for a container, and for a file with the name of one, because the oldest view-point
/// files do not begin with the magic.
bool IsModelOrViews(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return false;
  if (path.ends_with(".ryx") || path.ends_with(".vpt")) return true;
  try {
    QovJbf::JbFile file;
    file.OpenFile(path, "rb");
    return file.IsJbFile();
  } catch (const std::exception&) {
    return false;  // opening it for writing reports the cause
  }
}

}  // namespace

void RefuseToReplaceModel(const std::string& path, const std::string& input) {
  std::error_code error;
  const bool isInput = std::filesystem::equivalent(path, input, error);
  if (!isInput && !IsModelOrViews(path)) return;
  Util::Raise("tools/dump/FileOutput", Util::Exception::ErrorType::MiscellaneousError,
              "\"" + path + "\" is " + (isInput ? "the input" : "a model or view-point file") +
                  " and is not replaced: name another output");
}

std::FILE* FileOutput::GetStream() {
  if (mFile == nullptr) mFile.reset(std::fopen(mPath.c_str(), "wb"));
  if (mFile == nullptr) {
    Util::Raise("tools/dump/FileOutput", Util::Exception::ErrorType::WriteError,
                "Unable to open " + mPath + ": " + std::strerror(errno));
  }
  return mFile.get();
}

void FileOutput::Close() {
  GetStream();
  if (std::fclose(mFile.release()) != 0) HandleFailure();
}

}  // namespace Qov::Tools
