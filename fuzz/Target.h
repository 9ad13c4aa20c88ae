#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>

#include "Qov/Jbf/BlockZlibUnCompressor.h"
#include "Qov/Util/Exception.h"

/// What fuzz targets have in common. A target is a function that a fuzzer calls with any bytes at
/// all; linked with Replay.cpp instead it runs the files of a corpus.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace Qov::Fuzz {

/// Ends the program if something does not hold that has to hold for every input.
inline void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "Does not hold: %s\n", what);
  std::abort();
}

/// Keeps what is written to std::cerr from being seen, for as long as the object lives.
class SilentErrors {
 public:
  SilentErrors() : mBuffer(std::cerr.rdbuf(nullptr)) {}
  ~SilentErrors() {
    std::cerr.rdbuf(mBuffer);
    std::cerr.clear();
  }
  SilentErrors(const SilentErrors&) = delete;
  SilentErrors& operator=(const SilentErrors&) = delete;

 private:
  std::streambuf* mBuffer;
};

/// True if `work` takes what it is given; false if it refuses it with one of the exceptions that
/// bad input may raise. Whatever else it throws ends the program, as a crash does.
template <class Work>
bool Accepts(Work work) {
  const SilentErrors silence;
  try {
    work();
    return true;
  } catch (const Util::Exception&) {
    return false;
  } catch (const QovJbf::DamagedBlock&) {
    return false;
  }
}

}  // namespace Qov::Fuzz
