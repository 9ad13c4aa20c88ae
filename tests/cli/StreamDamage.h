#pragma once

#include <cstddef>
#include <string>

#include "support/Streams.h"

namespace Qov::Test {

/// Changes bytes: "PLACE = HEX" overwrites, "PLACE + HEX" inserts, "PLACE -" cuts off. A place is a
/// position, "NAME+12" (12 bytes after the end of the first occurrence of a name) or "end".
void Damage(std::string& bytes, const std::string& damage);

/// Applies a list "STREAM: DAMAGE; STREAM: DAMAGE". The damage "gone" removes the stream. Returns
/// the damage of the stream "file", which stands for the whole file that the streams are written
/// to.
std::string DamageStreams(Streams& streams, const std::string& damages);

}  // namespace Qov::Test
