#pragma once

#include <functional>

#include "ui/window_place.h"

class QPushButton;
class QUrl;
class QVBoxLayout;

namespace quarn {

class MessageOperations;

/// Shows a web page to the user. False when no browser could be started.
using LinkOpener = std::function<bool(const QUrl& page)>;

/// Shows what the program is, who made it, and its web page. Modal; OK, Enter, Escape and the close box close
/// it. The address shown and the page opened differ on purpose.
class CAboutBox final : public PlacedDialog {
 public:
  static constexpr int kLinkId = 1170;

  CAboutBox(LinkOpener openLink, MessageOperations& messages);

  /// Whether the page has been opened from this box.
  [[nodiscard]] bool LinkVisited() const { return m_linkVisited; }

 private:
  QVBoxLayout* CreateLabels();
  QPushButton* CreateOkButton();
  void OpenPage();

  const LinkOpener m_openLink;
  MessageOperations& m_messages;
  bool m_linkVisited = false;
};

}  // namespace quarn
