#include "Qov/Ryx/Progress.h"

#include <utility>

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
  if (gListener != nullptr) gListener->Advance(numBytes);
}

}  // namespace QovRyx
