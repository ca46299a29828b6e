#pragma once

class QUrl;

namespace quarn {

/// Shows a web page to the user.
class LinkOpener {
 public:
  virtual ~LinkOpener() = default;
  /// False when no browser could be started.
  virtual bool Open(const QUrl& page) = 0;
};

}  // namespace quarn
