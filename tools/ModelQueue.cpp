#include "ModelQueue.h"

#include <algorithm>
#include <iostream>
#include <sstream>
#include <utility>

#include "ModelInput.h"
#include "container/ThreadCount.h"

namespace Qov::Tools {
namespace {

/// Keeps what is written to std::cerr while the object exists.
class KeptErrors {
 public:
  KeptErrors() : mpBefore(std::cerr.rdbuf(mText.rdbuf())) {}
  ~KeptErrors() { std::cerr.rdbuf(mpBefore); }
  KeptErrors(const KeptErrors&) = delete;
  KeptErrors& operator=(const KeptErrors&) = delete;

  std::string GetText() const { return mText.str(); }

 private:
  std::ostringstream mText;
  std::streambuf* mpBefore;
};

}  // namespace

ModelQueue::ModelQueue(const std::vector<std::string>& paths, Plan plan)
    : mPaths(paths), mPlan(std::move(plan)), mAhead({}) {
  const std::size_t numThreads = QovJbf::GetThreadCount(0);
  mNumAtOnce = numThreads > 1 ? std::min(numThreads + 1, kMostLoaded) : 1;
}

std::unique_ptr<ModelQueue::Model> ModelQueue::Take() {
  while (mLoaded.size() < mNumAtOnce && mNumLoaded < mPaths.size()) LoadNext();
  Loaded next = std::move(mLoaded.front());
  mLoaded.pop_front();
  std::cerr << next.mErrors;
  return std::move(next.mpModel);
}

void ModelQueue::LoadNext() {
  Loaded& next = mLoaded.emplace_back();
  next.mpModel = std::make_unique<Model>();
  const KeptErrors errors;
  next.mpModel->mTrouble = LoadWhatCanBeRead(mPaths[mNumLoaded++], next.mpModel->mTree);
  next.mErrors = errors.GetText();
  mAhead.Append(mPlan(next.mpModel->mTree.GetNodes()));
}

}  // namespace Qov::Tools
