#include <gmock/gmock.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <sstream>
#include <string>

#include "Qov/Log/Manager.h"
#include "Qov/Log/Record.h"
#include "Qov/Util/Exception.h"
#include "support/Files.h"
#include "support/TempDir.h"

namespace {

using Qov::Log::kErrorLevel;
using Qov::Log::kTraceLevel;
using Qov::Log::Manager;
using Qov::Log::Record;
using Qov::Log::StreamPublisher;
using Qov::Util::LogRecord;

LogRecord MakeRecord(std::uint16_t level, const char* file) {
  return {level, {'t', 'e', 'x', 't'}, file, 758, "<unknown>", 0};
}

TEST(FormatterTest, KeepsTheLastPartOfTheSourcePath) {
  Qov::Log::DefaultFormatter format;
  for (const char* source : {"include/Qov/Ryx/Tree", "src\\Ryx\\Tree", "Tree"}) {
    EXPECT_EQ(format(MakeRecord(kTraceLevel, source)), "Tree : 758 @ text\n");
  }
}

TEST(ManagerTest, ProgressReachesOnlyTracePublishers) {
  std::ostringstream errors;
  std::ostringstream trace;
  std::ostringstream replaced;
  Manager manager;
  manager.TraceTo("errors", std::make_unique<StreamPublisher>(replaced));
  manager.AddPublisher("errors", new StreamPublisher(errors));
  manager.TraceTo("trace", std::make_unique<StreamPublisher>(trace));
  manager.Dispatch(MakeRecord(kTraceLevel, "Tree"));
  manager.Dispatch(MakeRecord(kErrorLevel, "Index"));
  EXPECT_EQ(replaced.str(), "");
  EXPECT_EQ(errors.str(), "Index : 758 @ text\n");
  EXPECT_EQ(trace.str(), "Tree : 758 @ text\nIndex : 758 @ text\n");
}

TEST(ManagerTest, UnknownPartsAreRefused) {
  Manager manager;
  manager.AddPublisher("null", new Qov::Log::NullPublisher);
  EXPECT_THROW(manager.AddLogger("null", "no filter", "__Default__"), Qov::Util::Exception);
  EXPECT_THROW(manager.AddLogger("none", "__Default__", "__Default__"), Qov::Util::Exception);
}

TEST(TraceTest, FileIsTruncatedAndFlushedAfterEachRecord) {
  const Qov::Test::TempDir dir;
  const std::string path = dir / "trace.log";
  Qov::Test::WriteFile(path, "an earlier run\n");
  Qov::Log::LogTraceToFile(path.c_str());
  Record(kTraceLevel, "Index", 7, "<unknown>")
      << "offset " << std::numeric_limits<std::uint64_t>::max() << std::string(" of ") << -1;
  EXPECT_EQ(Qov::Test::ReadFile(path), "Index : 7 @ offset 18446744073709551615 of -1\n");

  Record(kErrorLevel, "Index", 8, "<unknown>") << std::string(5000, 'x') << std::string(1000, 'y');
  EXPECT_EQ(Qov::Test::ReadFile(path),
            "Index : 7 @ offset 18446744073709551615 of -1\nIndex : 8 @ " + std::string(5000, 'x') +
                std::string(119, 'y') + "\n");
  Qov::Log::LogTraceToFile("/dev/null");
}

TEST(TraceTest, ConsoleShowsProgress) {
  testing::internal::CaptureStderr();
  Qov::Log::LogTraceToConsole();
  Qov::Log::Trace("src/Qov/Ryx/Tree", 12) << "Loading " << 3 << " nodes";
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Tree : 12 @ Loading 3 nodes\n");
}

}  // namespace
