#pragma once

#include <cstddef>

namespace Qov::Fuzz {

/// The places of the containers in the inputs of a target; the mutator uses them.
struct InputLayout {
  std::size_t mPrefix = 0;  ///< Bytes before the first container.
  bool mIsPair = false;     ///< True: as in FilePair (Models.h). False: one container.
};

/// Defined by each target whose inputs hold containers.
extern const InputLayout kInputLayout;

}  // namespace Qov::Fuzz
