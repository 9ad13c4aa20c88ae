#include "Qov/Ryx/Progress.h"

#include <utility>

#include "Qov/Util/Raise.h"

namespace QovRyx {
namespace {

ProgressListener* gListener = nullptr;

}  // namespace

ProgressListener* SetProgressListener(ProgressListener* listener) {
  return std::exchange(gListener, listener);
}

ProgressReport::ProgressReport(std::uint64_t numBytes) {
  if (gListener != nullptr) gListener->Start(numBytes);
}

ProgressReport::~ProgressReport() {
  if (gListener != nullptr) gListener->Finish();
}

void ProgressReport::Advance(std::uint64_t numBytes) {
  if (gListener == nullptr) return;
  gListener->Advance(numBytes);
  if (gListener->IsCancelled()) {
    Qov::Util::Raise("include/Qov/Ryx/Progress",
                     Qov::Util::Exception::ErrorType::MiscellaneousError, "The task was cancelled");
  }
}

}  // namespace QovRyx
