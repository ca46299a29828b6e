#pragma once

#include <QString>
#include <functional>
#include <memory>

namespace quarn {

/// Receives what later starts of the same user ask of this program: to come to the front, and to open a file.
/// Make one at most, in a thread with an event loop, as soon as the lock is taken: what is asked before the
/// loop runs waits for it. Where the system refuses what it takes, nothing is received.
class StartRequests {
 public:
  /// `asked` is called from the event loop, also while a box is shown. `file`: an absolute path, or empty.
  explicit StartRequests(std::function<void(const QString& file)> asked);
  ~StartRequests();
  StartRequests(const StartRequests&) = delete;
  StartRequests& operator=(const StartRequests&) = delete;

 private:
  class Receiver;
  std::unique_ptr<Receiver> m_receiver;
};

/// Asks the program that holds the lock, and lets it come to the front where the system asks for that. False
/// if there is none that could be reached.
bool AskRunningProgram(const QString& file);

}  // namespace quarn
