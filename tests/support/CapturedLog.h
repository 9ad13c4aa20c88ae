#pragma once

#include <sstream>
#include <string>

#include "Qov/Log/Manager.h"
#include "Qov/Util/SingletonHolder.h"

namespace Qov::Test {

/// Collects the error lines that the process logs while the object exists.
class CapturedLog {
 public:
  CapturedLog() { Manager().AddPublisher(kName, new Log::StreamPublisher(mStream)); }
  ~CapturedLog() { Manager().AddPublisher(kName, new Log::NullPublisher); }
  CapturedLog(const CapturedLog&) = delete;
  CapturedLog& operator=(const CapturedLog&) = delete;

  std::string Text() const { return mStream.str(); }

 private:
  static constexpr const char* kName = "captured log";
  static Log::Manager& Manager() { return Util::SingletonHolder<Log::Manager>::Instance(); }

  std::ostringstream mStream;
};

}  // namespace Qov::Test
