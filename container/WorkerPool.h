#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace QovJbf {

/// Threads that run tasks in the order in which they were posted.
///
/// Tasks must not throw, raise errors or log. They report results through data that they share with
/// the thread that posted them.
class WorkerPool {
 public:
  /// Threads are started when tasks are posted, at most `threads`, and none if that is less than
  /// two. If no thread can be started, Post runs the task itself.
  explicit WorkerPool(unsigned threads);
  /// Waits for the tasks that are running. Drops the tasks that have not begun.
  ~WorkerPool();
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  void Post(std::function<void()> task);
  /// Returns false if Post runs the tasks itself.
  bool HasThreads() const { return mMostThreads > 0; }

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
