#include "WorkerPool.h"

#include <exception>
#include <utility>

namespace QovJbf {

WorkerPool::WorkerPool(unsigned threads) : mMostThreads(threads > 1 ? threads : 0) {}

WorkerPool::~WorkerPool() {
  {
    const std::lock_guard lock(mMutex);
    mIsEnding = true;
  }
  mWake.notify_all();
  for (std::thread& thread : mThreads) thread.join();
}

void WorkerPool::StartThread() {
  try {
    mThreads.emplace_back([this] { Work(); });
  } catch (const std::exception&) {
    mMostThreads = mThreads.size();  // the system or the memory allows no more threads
  }
}

void WorkerPool::Post(std::function<void()> task) {
  if (mThreads.size() < mMostThreads) StartThread();
  if (mThreads.empty()) {
    task();
    return;
  }
  {
    const std::lock_guard lock(mMutex);
    mTasks.push_back(std::move(task));
  }
  mWake.notify_one();
}

void WorkerPool::Work() {
  std::unique_lock lock(mMutex);
  while (true) {
    mWake.wait(lock, [this] { return mIsEnding || !mTasks.empty(); });
    if (mIsEnding) return;
    const std::function<void()> task = std::move(mTasks.front());
    mTasks.pop_front();
    lock.unlock();
    task();
    lock.lock();
  }
}

}  // namespace QovJbf
