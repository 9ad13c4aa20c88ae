#include "Qov/Ryx/OutputSettings.h"

#include <limits>
#include <string>

#include "Qov/Util/Raise.h"
#include "container/ThreadCount.h"

namespace QovRyx {
namespace {

constexpr std::uint64_t kLeastBlockSize = 1024;
/// The limit of the environment variable too.
constexpr std::uint64_t kMostBlockSize = std::numeric_limits<std::uint32_t>::max() - 1;

void CheckRange(const std::string& name, long long value, long long least, long long most) {
  if (value >= least && value <= most) return;
  Qov::Util::Raise("include/Qov/Ryx/OutputSettings", Qov::Util::Exception::ErrorType::OutOfBounds,
                   name + " must be from " + std::to_string(least) + " to " + std::to_string(most) +
                       ", not " + std::to_string(value));
}

}  // namespace

void CheckSettings(const OutputSettings& settings) {
  CheckRange("The compression level", settings.mLevel, 1, 9);
  if (settings.mBlockSize != 0) {
    CheckRange("The block size in bytes", settings.mBlockSize, kLeastBlockSize, kMostBlockSize);
  }
  CheckRange("The number of threads", settings.mThreads, 0, QovJbf::kMostThreads);
}

}  // namespace QovRyx
