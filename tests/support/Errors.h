#pragma once

#include <gtest/gtest.h>

#include <string>

#include "Qov/Util/Exception.h"

namespace Qov::Test {

using ErrorType = Qov::Util::Exception::ErrorType;

/// Expects `call` to raise an error of this type whose description contains `text`.
template <class Call>
void ExpectError(ErrorType type, const std::string& text, Call call) {
  try {
    call();
    ADD_FAILURE() << "no error was raised; expected: " << text;
  } catch (const Qov::Util::Exception& error) {
    EXPECT_EQ(error.GetType(), type) << error.GetLogMessage();
    EXPECT_NE(std::string(error.GetLogMessage()).find(text), std::string::npos)
        << error.GetLogMessage();
  }
}

}  // namespace Qov::Test
