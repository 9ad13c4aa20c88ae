#pragma once

#include <cstdint>

namespace QovRyx {

/// How many results may have the same bytes of a file as their values. Writers make next to no use
/// of it, but without a bound a few bytes could stand for any amount of work.
inline constexpr std::uint64_t kMostShares = 64;

}  // namespace QovRyx
