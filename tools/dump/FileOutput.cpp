#include "dump/FileOutput.h"

#include <cerrno>
#include <cstring>

#include "Qov/Util/Raise.h"

namespace Qov::Tools {

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
