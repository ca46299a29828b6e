#include <pthread.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <utility>

#include "app/ending_signals.h"

namespace quarn {
namespace {

constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};
/// What a shell reports for a process that a signal has ended.
constexpr int kEndedBySignal = 128;

std::atomic<int> g_wake{-1};  ///< an eventfd
std::atomic<int> g_signal{0};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler uses them");

/// The handler: calls only what may be called there.
void Notice(int signal) {
  const int error = errno;
  g_signal = signal;
  for (const int each : kSignals) {
    struct sigaction present {};
    if (::sigaction(each, nullptr, &present) == 0 && present.sa_handler == &Notice) ::signal(each, SIG_DFL);
  }
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = ::write(g_wake, &one, sizeof one);
  errno = error;
}

void HandleUnlessIgnored(int signal) {
  struct sigaction action {};
  if (::sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) return;
  action = {};
  action.sa_handler = &Notice;
  // A second one waits until the handler has left it to the system.
  for (const int each : kSignals) sigaddset(&action.sa_mask, each);
  action.sa_flags = SA_RESTART;
  ::sigaction(signal, &action, nullptr);
}

}  // namespace

class EndingSignals::Watch {
  static inline Watch* s_present = nullptr;

  /// Qt calls exit when the display has gone. Not in another thread, which this one may wait for.
  static void CloseAtExit() {
    Watch* const watch = std::exchange(s_present, nullptr);
    if (watch != nullptr && ::pthread_equal(::pthread_self(), watch->m_thread) != 0) watch->m_close();
  }

 public:
  /// The descriptor stays open until the process ends, like the handlers that use it.
  explicit Watch(std::function<void()> close) : m_close(std::move(close)) {
    s_present = this;
    [[maybe_unused]] static const int registered = std::atexit(&CloseAtExit);
    g_wake = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (g_wake < 0) return;
    m_notifier.emplace(g_wake, QSocketNotifier::Read);
    QObject::connect(&*m_notifier, &QSocketNotifier::activated, &*m_notifier, [this] { End(); });
    for (const int each : kSignals) HandleUnlessIgnored(each);
  }
  ~Watch() { s_present = nullptr; }
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

 private:
  void End() {
    m_notifier->setEnabled(false);
    s_present = nullptr;
    m_close();
    ::raise(g_signal);
    ::_exit(kEndedBySignal + g_signal);
  }

  const std::function<void()> m_close;
  const pthread_t m_thread = ::pthread_self();
  std::optional<QSocketNotifier> m_notifier;
};

EndingSignals::EndingSignals(std::function<void()> close)
    : m_watch(std::make_unique<Watch>(std::move(close))) {}
EndingSignals::~EndingSignals() = default;

}  // namespace quarn
