#pragma once

#include <cstddef>

/// Makes calls of the C library fail. The linker redirects the calls of the library under test to
/// Faults.cpp (see CMakeLists.txt).
namespace Qov::Test::Faults {

enum class Call {
  Open,
  Close,
  Read,
  Write,
  Seek,
  Tell,
  Flush,
  Memory,
  Zlib,
  Inflate,
  Sync,
  Rename
};

/// Makes call number `n` (from 1) of this kind fail, and all later ones if `andLater` is true.
void Arm(Call call, std::size_t n, bool andLater);
/// Ends the faults. Returns true if any call failed since Arm.
bool Disarm();

}  // namespace Qov::Test::Faults
