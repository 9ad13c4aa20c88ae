#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace QovJbf {

/// Threads that run tasks in the order in which they come.
///
/// Tasks must not throw, raise errors or log: what they find goes back through what they share
/// with the thread that posted them.
class WorkerPool {
 public:
  /// At most `threads` threads, which are started as tasks come in; with fewer than two there is
  /// none. Without threads, also because the system grants none, a task runs at once, in Post.
  explicit WorkerPool(unsigned threads);
  /// Waits for the tasks that are running; those that wait are dropped.
  ~WorkerPool();
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  void Post(std::function<void()> task);

 private:
  void StartThread();
  void Work();

  std::mutex mMutex;
  std::condition_variable mWake;
  std::deque<std::function<void()>> mTasks;
  bool mIsEnding = false;
  std::size_t mMostThreads;
  std::vector<std::thread> mThreads;
};

}  // namespace QovJbf
