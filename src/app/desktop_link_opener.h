#pragma once

#include "app/link_opener.h"

namespace quarn {

/// Opens pages in the browser of the user's choice.
class DesktopLinkOpener final : public LinkOpener {
 public:
  bool Open(const QUrl& page) override;
};

}  // namespace quarn
