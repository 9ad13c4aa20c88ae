#include "Qov/Log/Record.h"

#include <algorithm>
#include <cstring>

#include "Qov/Log/Manager.h"
#include "Qov/Util/SingletonHolder.h"

namespace Qov::Log {

// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): a message ends with its text
Record::Record(unsigned short level, const char* file, unsigned long line, const char* method) {
  mRecord.mLevel = level;
  mRecord.mMessage[0] = '\0';
  mRecord.mFile = file;
  mRecord.mLine = line;
  mRecord.mMethod = method;
  mRecord.mTime = std::time(nullptr);
}

Record::~Record() {
  try {
    Util::SingletonHolder<Manager>::Instance().Dispatch(mRecord);
  } catch (...) {
    // A line that cannot be written must not hide the error that it reports.
  }
}

Record& Record::operator<<(const char* text) {
  const std::size_t room = Util::LogRecord::kMessageSize - 1 - mLength;
  const std::size_t length = std::min(std::strlen(text), room);
  std::memcpy(mRecord.mMessage.data() + mLength, text, length);
  mLength += length;
  mRecord.mMessage[mLength] = '\0';
  return *this;
}

}  // namespace Qov::Log
