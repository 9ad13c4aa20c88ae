#pragma once

#include <clocale>
#include <cstdlib>
#include <locale>
#include <string>

#include "support/Files.h"
#include "support/TempDir.h"

namespace Qov::Test {

/// Makes numbers in C++ streams have a decimal comma and spaces between groups of digits while the
/// object exists.
class ForeignStreams {
 public:
  ForeignStreams()
      : mBefore(std::locale::global(std::locale(std::locale::classic(), new Punctuation))) {}
  ~ForeignStreams() { std::locale::global(mBefore); }
  ForeignStreams(const ForeignStreams&) = delete;
  ForeignStreams& operator=(const ForeignStreams&) = delete;

 private:
  struct Punctuation : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return ' '; }
    std::string do_grouping() const override { return "\3"; }
  };

  std::locale mBefore;
};

/// Makes the C library read and write numbers with a decimal comma while the object exists, if such
/// a locale can be created.
class DecimalComma {
 public:
  explicit DecimalComma(const TempDir& folder) {
    WriteFile(folder / "comma",
              "LC_NUMERIC\ndecimal_point \"<U002C>\"\nthousands_sep \"<U002E>\"\n"
              "grouping 3;3\nEND LC_NUMERIC\n");
    const std::string name = "xx_XX.UTF-8";
    const std::string make =
        "cd '" + folder.GetPath().string() + "' && localedef -c -i ./comma -f UTF-8 ./" + name;
    static_cast<void>(std::system((make + " >/dev/null 2>&1").c_str()));
    ::setenv("LOCPATH", folder.GetPath().c_str(), 1);
    std::setlocale(LC_NUMERIC, name.c_str());
    ::unsetenv("LOCPATH");
  }
  ~DecimalComma() { std::setlocale(LC_NUMERIC, "C"); }
  DecimalComma(const DecimalComma&) = delete;
  DecimalComma& operator=(const DecimalComma&) = delete;

  bool IsSet() const { return std::strtod("0,5", nullptr) == 0.5; }
};

}  // namespace Qov::Test
