#include "ui/clipboard_text.h"

#include <QGuiApplication>
#include <QMimeData>

namespace quarn {

std::optional<QString> ClipboardTextFromQt(QClipboard::Mode mode) {
  const QMimeData* content = QGuiApplication::clipboard()->mimeData(mode);
  if (content == nullptr || !content->hasText()) return std::nullopt;
  return content->text();
}

}  // namespace quarn
