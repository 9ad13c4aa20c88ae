#include "Qov/Util/Exception.h"

#include <gmock/gmock.h>

#include <cstring>
#include <string>

#include "Qov/Util/Assert.h"
#include "Qov/Util/Raise.h"
#include "support/CapturedLog.h"

namespace {

using Qov::Util::Exception;
using ErrorType = Exception::ErrorType;
using testing::MatchesRegex;
using testing::StartsWith;

constexpr const char* kSource = "include/Qov/Jbf/Block";

TEST(ExceptionTest, ReportNamesKindDescriptionAndPlace) {
  const Exception error(ErrorType::OutOfBounds, "Invalid block position", kSource, 318,
                        "<unknown>");
  EXPECT_THAT(error.what(), MatchesRegex("Exception \"Out of Bounds\" raised\\. \n"
                                         "Description : Invalid block position \n"
                                         "       File : include/Qov/Jbf/Block \n"
                                         "       Line : 318 \n"
                                         "     Method : <unknown> \n"
                                         "       Time : ... ... .. ..:..:.. ....\n \n"));
  EXPECT_EQ(error.GetType(), ErrorType::OutOfBounds);
  EXPECT_STREQ(error.GetLogMessage(), "Invalid block position");
}

TEST(ExceptionTest, ReportWithoutDescriptionNamesTheKind) {
  const Exception error(ErrorType::MiscellaneousError, kSource, 1, "<unknown>");
  EXPECT_STREQ(error.GetLogMessage(), "Miscelleneous Error");
  EXPECT_STREQ(Exception::GetDescription(ErrorType::MismatchError), "Mis-match Error");
  EXPECT_STREQ(Exception::GetDescription(ErrorType{22}), "Invalid Exception");
  EXPECT_STREQ(Exception::GetDescription(ErrorType{0xFFFFFFFF}), "Invalid Exception");
}

TEST(ExceptionTest, LongTextsAreCutAndTerminated) {
  const std::string text(9000, 'x');
  const Exception error(ErrorType::ReadError, text.c_str(), kSource, 1, "<unknown>");
  EXPECT_EQ(error.GetLogMessage(), text.substr(0, Exception::kDescriptionSize));
  EXPECT_THAT(error.what(), StartsWith("Exception \"Read Error\" raised. \nDescription : xxx"));

  const Exception longSource(ErrorType::ReadError, text.c_str(), text.c_str(), 1, "<unknown>");
  EXPECT_EQ(std::strlen(longSource.what()), Exception::kMessageSize - 1);
}

TEST(RaiseTest, LogsAndThrowsTheTextWithTheCallersLine) {
  const Qov::Test::CapturedLog log;
  const int line = __LINE__ + 2;
  try {
    Qov::Util::Raise(kSource, ErrorType::ElementNotFound, "No such stream");
    FAIL() << "nothing was thrown";
  } catch (const Exception& error) {
    EXPECT_EQ(error.GetType(), ErrorType::ElementNotFound);
    EXPECT_STREQ(error.GetLogMessage(), "No such stream");
    EXPECT_EQ(error.GetLine(), static_cast<unsigned long>(line));
    EXPECT_STREQ(error.GetFile(), kSource);
    EXPECT_EQ(log.Text(), "Block : " + std::to_string(line) + " @ No such stream\n");
  }
}

TEST(AssertDeathTest, StopsTheProcessOnlyWhenTheConditionFails) {
  QOV_ASSERT(kSource != nullptr);
  EXPECT_DEATH(QOV_ASSERT(kSource == nullptr), "\"kSource == nullptr\" failed");
}

}  // namespace
