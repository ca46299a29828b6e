#include "ui/clipboard_text.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

namespace quarn {

std::optional<QString> ClipboardTextFromQt() {
  const QMimeData* content = QGuiApplication::clipboard()->mimeData();
  if (content == nullptr || !content->hasText()) return std::nullopt;
  return content->text();
}

}  // namespace quarn
