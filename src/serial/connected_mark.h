#pragma once

namespace quarn {

/// What has become of the port that the program works with.
enum class PortChange {
  Opened,        ///< opened and set up, to be worked with
  NotOpened,     ///< that has failed, or the port is not present
  Closed,        ///< by a person, or because another file or the end of the program wants it so
  Lost,          ///< gone from the list, or its line has died; the handle is left alone until it is closed
  Undefined,     ///< there is no port any more, as NONE says
  FormerChosen,  ///< another one could not be opened, so that this one is the port again
};

/// Opened or NotOpened.
constexpr PortChange OpeningThat(bool succeeded) {
  return succeeded ? PortChange::Opened : PortChange::NotOpened;
}

/// Whether a port counts as connected after a change. That is what was last achieved or told, and not whether
/// a line is open. The former port counts even when it could not be opened again: the port monitor then finds
/// it without a line and tells that it is lost. A lost one does not count, though its handle may still hold a
/// line.
constexpr bool CountsAsConnected(PortChange change) {
  switch (change) {
    case PortChange::Opened:
    case PortChange::FormerChosen:
      return true;
    case PortChange::NotOpened:
    case PortChange::Closed:
    case PortChange::Lost:
    case PortChange::Undefined:
      return false;
  }
  return false;
}

/// Whether the port counts as connected: what title, menu and dialogs go by, and what the port monitor
/// watches. It changes only by what has become of the port. User-interface thread.
class ConnectedMark {
 public:
  [[nodiscard]] bool IsSet() const { return m_set; }
  void Update(PortChange change) { m_set = CountsAsConnected(change); }

 private:
  bool m_set = false;
};

}  // namespace quarn
