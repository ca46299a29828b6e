#include "terminal/worker_thread.h"

#include <utility>

namespace quarn {

WorkerThread::~WorkerThread() {
  if (!m_thread.joinable()) return;
  {
    const std::lock_guard guard(m_mutex);
    m_ends = true;
  }
  m_changed.notify_all();
  m_thread.join();
}

void WorkerThread::Run(std::function<void()> job) {
  if (!m_thread.joinable()) m_thread = std::thread([this] { Work(); });
  {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return !m_job; });
    m_job = std::move(job);
  }
  m_changed.notify_all();
}

void WorkerThread::WaitForEnd() {
  std::unique_lock lock(m_mutex);
  m_changed.wait(lock, [this] { return !m_job; });
}

void WorkerThread::Work() {
  std::unique_lock lock(m_mutex);
  while (true) {
    m_changed.wait(lock, [this] { return m_job || m_ends; });
    if (!m_job) return;
    // Nobody else touches it before it is empty again.
    lock.unlock();
    m_job();
    lock.lock();
    m_job = nullptr;
    m_changed.notify_all();
  }
}

}  // namespace quarn
