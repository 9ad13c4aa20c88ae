#pragma once

#include "Qov/Ryx/Geometry.h"

namespace QovRyx {

/// Limits the memory of linked results, because a small file could ask for any number of them.
/// Sizes are in bytes.
struct SharingLimit {
  static constexpr double kFreeBytes = 256.0 * 1024 * 1024;  ///< Allowed for any model.
  static constexpr double kMostCopies = 64;                  ///< Allowed size per size of results.

  /// Returns the approximate size of a result without its values.
  static double SizeOf(const Geometry::VarStruct& result);
  /// Raises OutOfBounds if `needed` is more than `allowed`.
  static void Check(double needed, double allowed);
};

}  // namespace QovRyx
