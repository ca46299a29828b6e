#include <QAction>
#include <QWidget>
#include <utility>

#include "app/about_item.h"

namespace quarn {

void AddWindowMenuItem(QWidget& window, const QString& text, std::function<void()> chosen) {
  auto* item = new QAction(text, &window);
  QObject::connect(item, &QAction::triggered, &window, std::move(chosen));
  window.addAction(item);
  window.setContextMenuPolicy(Qt::ActionsContextMenu);
}

}  // namespace quarn
