#pragma once

#include <QString>
#include <functional>

class QWidget;

namespace quarn {

/// Adds an item to the menu that belongs to the window as such: the system menu where the system has one,
/// else the context menu.
void AddWindowMenuItem(QWidget& window, const QString& text, std::function<void()> chosen);

}  // namespace quarn
