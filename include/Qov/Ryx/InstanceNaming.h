#pragma once

namespace QovRyx {

/// How a merge as instances names the results, and which results it takes from further files. The
/// suffix of file number k is "F" and k; it becomes the beginning of the instance part
/// (InstanceNames.h).
enum class InstanceNaming {
  Plain,                  ///< Every name gets an instance part without a suffix.
  FileSuffix,             ///< Every name gets an instance part with the suffix.
  AutomaticSuffix,        ///< Names with an instance part get the suffix; only these are taken.
  AutomaticWithoutSuffix  ///< Names are kept; only those with an instance part are taken.
};

}  // namespace QovRyx
