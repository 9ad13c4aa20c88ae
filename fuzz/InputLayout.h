#pragma once

#include <cstddef>

namespace Qov::Fuzz {

/// How the containers lie in the inputs of a target, for the mutator.
struct InputLayout {
  std::size_t mPrefix = 0;  ///< Bytes in front.
  bool mIsPair = false;     ///< Length of the first: u32 | first | second. Else: one container.
};

/// Said by each target whose inputs hold containers.
extern const InputLayout kInputLayout;

}  // namespace Qov::Fuzz
