#include "app/desktop_link_opener.h"

#include <QDesktopServices>
#include <QUrl>

namespace quarn {

bool DesktopLinkOpener::Open(const QUrl& page) { return QDesktopServices::openUrl(page); }

}  // namespace quarn
