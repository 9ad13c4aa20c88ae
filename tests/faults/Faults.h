#pragma once

#include <cstddef>

/// Makes calls of the C library fail. The program that uses it is linked so that the calls of the
/// library under test come here first (CMakeLists.txt).
namespace Qov::Test::Faults {

enum class Call { Open, Close, Read, Write, Seek, Tell, Flush, Memory, Zlib, Inflate };

/// From now on the call number `n`, from 1, of this kind fails, and all behind it if `andLater`.
void Arm(Call call, std::size_t n, bool andLater);
/// No call fails any more. True if any did since Arm.
bool Disarm();

}  // namespace Qov::Test::Faults
