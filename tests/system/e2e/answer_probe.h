#pragma once

#include <QString>
#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

namespace quarn::test {

/// Asks a program a small question about its first window, over and over, from a thread of its own. The
/// program answers in its user-interface thread, between two events: an answer takes as long as that thread
/// is held up.
class AnswerProbe {
 public:
  using Clock = std::chrono::steady_clock;

  /// `service` is the program on the accessibility bus at this address, `process` its number.
  AnswerProbe(QString busAddress, QString service, qint64 process);
  ~AnswerProbe();
  AnswerProbe(const AnswerProbe&) = delete;
  AnswerProbe& operator=(const AnswerProbe&) = delete;

  /// The longest that an answer took; the question that is still open counts as far as it has got.
  [[nodiscard]] std::chrono::milliseconds Longest() const;
  /// The same without the time for which the program's thread or this one waited for a processor or the disk:
  /// other programs keep these busy.
  [[nodiscard]] std::chrono::milliseconds LongestOfItsOwn() const;
  [[nodiscard]] int Answers() const { return m_answers; }
  /// Questions that got no answer at all.
  [[nodiscard]] int Failures() const { return m_failures; }

 private:
  void Run();
  void WatchTheDisk();
  /// For how long the program's first thread and the calling one have waited for a processor or the disk,
  /// since they began.
  [[nodiscard]] Clock::duration HeldUpByOthers() const;

  const QString m_address;
  const QString m_service;
  const QString m_folder;  ///< what the system says of the program's first thread
  std::atomic<bool> m_stop = false;
  std::atomic<int> m_answers = 0;
  std::atomic<int> m_failures = 0;
  std::atomic<Clock::duration> m_waitedForDisk{Clock::duration::zero()};
  mutable std::mutex m_mutex;
  Clock::duration m_longest{};
  Clock::duration m_longestOfItsOwn{};
  Clock::time_point m_asked{};
  bool m_open = false;
  std::thread m_diskThread;
  std::thread m_thread;
};

}  // namespace quarn::test
