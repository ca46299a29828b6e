#pragma once

#include <QString>
#include <functional>

class QWidget;

namespace quarn {

/// Adds an item to the window's own menu: the system menu if the system has one, otherwise the context menu.
void AddWindowMenuItem(QWidget& window, const QString& text, std::function<void()> chosen);

}  // namespace quarn
