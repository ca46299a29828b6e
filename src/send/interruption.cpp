#include "send/interruption.h"

#include <atomic>
#include <csignal>

namespace quarn::send {
namespace {

std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may set it");

void Notice(int signal) {
  interrupted = true;
  (void)std::signal(signal, SIG_DFL);
}

}  // namespace

void NoticeInterruption() {
  (void)std::signal(SIGINT, Notice);
  (void)std::signal(SIGTERM, Notice);
#ifdef SIGHUP
  (void)std::signal(SIGHUP, Notice);
#endif
}

bool IsInterrupted() { return interrupted; }

}  // namespace quarn::send
