#pragma once

#include <functional>
#include <memory>

namespace quarn {

/// Signals by which the system, or whoever started the program, ends it: SIGTERM, SIGHUP and SIGINT. Without
/// this they would end it in the middle of its work, with the line as it was set for an instrument. A signal
/// that was ignored at the start stays ignored. Does nothing where the system has no such signals.
///
/// On Linux it also releases what has to be released when the thread that made it calls exit, as Qt does when
/// the display has gone.
///
/// Make one, after the application object and in its thread. A signal that comes when the object is gone
/// changes nothing, because the program is at its end then.
class EndingSignals {
 public:
  /// `close` releases what has to be released. It is called once, from whatever event loop runs, also that of
  /// a box or a wait. Then the process ends as by this signal; a second signal ends it at once.
  explicit EndingSignals(std::function<void()> close);
  ~EndingSignals();
  EndingSignals(const EndingSignals&) = delete;
  EndingSignals& operator=(const EndingSignals&) = delete;

 private:
  class Watch;
  std::unique_ptr<Watch> m_watch;
};

}  // namespace quarn
