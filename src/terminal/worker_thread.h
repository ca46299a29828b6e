#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace quarn {

/// A thread that runs one job after another and sleeps in between. On a busy computer a new thread for each
/// costs a fifth of a short transaction's processor time. All calls from the owner's thread.
class WorkerThread {
 public:
  WorkerThread() = default;
  /// Waits for the job that runs.
  ~WorkerThread();
  WorkerThread(const WorkerThread&) = delete;
  WorkerThread& operator=(const WorkerThread&) = delete;

  /// Runs the job there, after the one before it. The first call starts the thread; std::system_error if the
  /// system gives none. The job must not throw.
  void Run(std::function<void()> job);
  /// Returns when the job has ended, and nothing of it is used any more.
  void WaitForEnd();

 private:
  void Work();

  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::function<void()> m_job;  ///< to run, or running: changed only under m_mutex
  bool m_ends = false;          ///< guarded by m_mutex
  std::thread m_thread;
};

}  // namespace quarn
