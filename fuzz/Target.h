#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>

#include "Qov/Jbf/BlockZlibUnCompressor.h"
#include "Qov/Util/Exception.h"

/// Functions that all fuzz targets share. A target is a function that a fuzzer calls with arbitrary
/// bytes. Linked with Replay.cpp instead of a fuzzer, it runs the files of a corpus.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace Qov::Fuzz {

/// Ends the program if a property that must hold for every input does not hold.
inline void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "Does not hold: %s\n", what);
  std::abort();
}

/// Discards what is written to std::cerr while the object exists.
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

/// Returns true if `work` succeeds, and false if it throws one of the exceptions that bad input may
/// cause. Any other exception ends the program.
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
